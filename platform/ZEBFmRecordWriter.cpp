#include "platform/ZEBFmRecordWriter.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

/// Holds the operating system's lock on a file from take() on. A file system without locks still
/// takes the record.
class FileLock {
 public:
  explicit FileLock(ZEBFmChannel& channel) noexcept : m_channel(channel) {}
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock() {
    if (m_isTaken) {
      m_channel.unlock();
    }
  }
  void take() { m_isTaken = m_isTaken || m_channel.lock() == 0; }

 private:
  ZEBFmChannel& m_channel;
  bool m_isTaken = false;
};

}  // namespace

ZEBFmRecordWriter::ZEBFmRecordWriter(std::unique_ptr<ZEBFmChannel> channel)
    : m_channel(std::move(channel)) {}

ZEBFmRecordWriter::~ZEBFmRecordWriter() = default;

LOG4ZEB_HOT int ZEBFmRecordWriter::write(const char* bytes, std::size_t size,
                                         std::size_t& written) {
  if (written != 0 || !m_left.empty() || !m_channel->isRegular() || !m_channel->appendIsAtomic()) {
    return writeWithCare(bytes, size, written);
  }
  const int error = writeOnce(bytes, size, written);
  return error != 0 || written == size ? error : writeWithCare(bytes, size, written);
}

int ZEBFmRecordWriter::writeWithCare(const char* bytes, std::size_t size, std::size_t& written) {
  if (!m_channel->isRegular()) {
    return writeRest(bytes, size, written);
  }
  FileLock lock(*m_channel);
  if (written == 0) {
    if (!m_channel->appendIsAtomic()) {
      lock.take();
    }
    const int error = writeOnce(bytes, size, written);
    if (error != 0 || written == size) {
      return error;
    }
  }
  lock.take();
  return complete(bytes, size, written);
}

LOG4ZEB_HOT int ZEBFmRecordWriter::writeOnce(const char* bytes, std::size_t size,
                                             std::size_t& written) {
  const int error = m_left.empty() ? 0 : endWhatWasLeft();
  if (error != 0) {
    return error;
  }
  const std::int64_t once = m_channel->write(bytes, size);
  written = once < 0 ? 0 : static_cast<std::size_t>(once);
  return once < 0 ? m_channel->getLastError() : 0;
}

int ZEBFmRecordWriter::goOn(const char* bytes, std::size_t size, std::size_t& written) {
  std::vector<Piece> beginning = std::exchange(m_left, {});
  const int error = write(bytes, size, written);
  if (error != 0) {
    std::swap(beginning, m_left);
    for (const Piece& later : beginning) {
      addLeft(later);
    }
  }
  return error;
}

int ZEBFmRecordWriter::complete(const char* bytes, std::size_t size, std::size_t& written) {
  Piece piece = endingHere(written);
  while (written < size) {
    const std::int64_t more = m_channel->write(bytes + written, size - written);
    if (more < 0) {
      const int error = m_channel->getLastError();
      written = leaveBehind(piece);
      return error;
    }
    const Piece next = endingHere(static_cast<std::size_t>(more));
    if (m_channel->isOwned() && isApart(piece, next)) {
      // Other processes take the lock only when they get here themselves: one has appended between
      // the halves, so the record begins anew behind that.
      leaveBehind(piece);
      leaveBehind(next);
      written = 0;
      const int error = writeOnce(bytes, size, written);
      if (error != 0) {
        return error;
      }
      piece = endingHere(written);
    } else {
      piece.size += next.size;
      written += next.size;
    }
  }
  return 0;
}

int ZEBFmRecordWriter::writeRest(const char* bytes, std::size_t size, std::size_t& written) {
  while (written < size) {
    const std::int64_t more = m_channel->write(bytes + written, size - written);
    if (more < 0) {
      return m_channel->getLastError();
    }
    written += static_cast<std::size_t>(more);
  }
  return 0;
}

ZEBFmRecordWriter::Piece ZEBFmRecordWriter::endingHere(std::size_t size) {
  const std::int64_t end = m_channel->position();
  return {end < 0 ? -1 : end - static_cast<std::int64_t>(size), size};
}

/// Whether something else stands between the pieces.
bool ZEBFmRecordWriter::isApart(const Piece& piece, const Piece& next) {
  const bool areKnown = piece.begin >= 0 && next.begin >= 0;
  return areKnown && next.begin != piece.begin + static_cast<std::int64_t>(piece.size);
}

void ZEBFmRecordWriter::addLeft(const Piece& piece) {
  if (m_left.empty() || isApart(m_left.back(), piece)) {
    m_left.push_back(piece);
  } else {
    m_left.back().size += piece.size;
  }
}

/// Makes the piece a blank line. A stream of the host program's is left alone: it may not be
/// appending. Returns whether that was done.
bool ZEBFmRecordWriter::blankOut(const Piece& piece) {
  if (piece.begin < 0 || !m_channel->isOwned()) {
    return false;
  }
  std::string blanks(piece.size, ' ');
  blanks.replace(piece.size - std::min<std::size_t>(piece.size, 2), 2,
                 piece.size == 1 ? "\n" : "\r\n");
  return m_channel->overwrite(piece.begin, blanks.data(), blanks.size()) == 0;
}

/// Blanks a piece of a lost record out. Returns how many bytes stay in the file; the next record
/// sees to them.
std::size_t ZEBFmRecordWriter::leaveBehind(const Piece& piece) {
  if (piece.size == 0 || blankOut(piece)) {
    return 0;
  }
  addLeft(piece);
  return piece.size;
}

/// Blanks out what was left of a lost record, or at least ends its line.
int ZEBFmRecordWriter::endWhatWasLeft() {
  m_left.erase(std::remove_if(m_left.begin(), m_left.end(),
                              [this](const Piece& piece) { return blankOut(piece); }),
               m_left.end());
  if (m_left.empty()) {
    return 0;
  }
  std::size_t ended = 0;
  const int error = writeRest("\r\n", 2, ended);
  if (error == 0) {
    m_left.clear();
  } else if (ended != 0) {
    addLeft(endingHere(ended));
  }
  return error;
}

int ZEBFmRecordWriter::close() {
  if (!m_left.empty()) {
    endWhatWasLeft();
  }
  return m_channel->close() != 0 ? m_channel->getLastError() : 0;
}

void ZEBFmRecordWriter::partFromParent() noexcept {
  m_left.clear();
  m_channel->partFromParent();
}
