#include "platform/ZEBFmFile.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

#include "platform/ZEBFmBufferedFiles.h"
#include "platform/ZEBFmChannel.h"
#include "platform/ZEBFmHold.h"
#include "platform/ZEBFmRecordWriter.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadInlineGuard.h"

namespace {

/// How many bytes a hold lets wait at most.
constexpr std::size_t MOST_HELD = std::size_t{64} * 1024;

void setName(ZEBThreadCriticalSection& section, I18NString& name, const I18NString& value) {
  const ZEBThreadGuard guard(section);
  name = value;
}

}  // namespace

ZEBFmFile::ZEBFmFile() : m_reference(std::make_shared<Reference>()) { m_reference->file = this; }

ZEBFmFile::~ZEBFmFile() {
  close();
  const ZEBThreadGuard guard(m_reference->section);
  m_reference->file = nullptr;
}

int ZEBFmFile::succeeded(int error) noexcept {
  if (error != 0) {
    m_lastError.store(error, std::memory_order_relaxed);
  }
  return error == 0 ? 1 : 0;
}

int ZEBFmFile::open(const I18NString& name, int mode, bool mayWait) {
  close();
  const bool goesOn = m_endsInHalf && m_name == name && mode != TRUNCATE;
  setName(m_reference->section, m_name, name);
  ZEBFmChannel::Opened opened = ZEBFmChannel::open(name, mode == TRUNCATE, mayWait);
  const int result = use(std::move(opened.channel), opened.error);
  if (result != 0 && goesOn) {
    m_writer->beginLine();
  }
  return result;
}

int ZEBFmFile::attachStandard(int stream) {
  close();
  setName(m_reference->section, m_name,
          stream == STANDARD_ERROR ? "standard error" : "standard output");
  ZEBFmChannel::Opened opened = ZEBFmChannel::attachStandard(stream);
  return use(std::move(opened.channel), opened.error);
}

int ZEBFmFile::use(std::unique_ptr<ZEBFmChannel> channel, int error) {
  if (error == 0) {
    auto writer = std::make_unique<ZEBFmRecordWriter>(std::move(channel));
    const ZEBThreadGuard guard(m_reference->section);
    m_writer = std::move(writer);
    m_endsInHalf = false;
    m_lostBytes = 0;
  }
  return succeeded(error);
}

/// What waits in memory is the parent's to write.
void ZEBFmFile::forgetInChild() {
  m_buffer.clear();
  m_heldEnds.clear();
  m_goesOn = false;
  m_isHeld = false;
  m_lostBytes = 0;
  m_lostRecords = 0;
  if (m_writer != nullptr) {
    m_writer->partFromParent();
  }
}

void ZEBFmFile::enterForEndOfProcess() {
  if (!std::exchange(m_isEntered, true)) {
    ZEBFmBufferedFiles::add(*this);
  }
}

void ZEBFmFile::setBufferSize(std::size_t bytes) {
  if (bytes != 0) {
    enterForEndOfProcess();
  }
  const ZEBThreadGuard guard(m_reference->section);
  writeBuffer();
  m_capacity = isOpen() != 0 ? bytes : 0;
}

inline std::size_t ZEBFmFile::room() const noexcept {
  if (m_capacity != 0) {
    return ZEBFmBufferedFiles::hasProcessEnded() ? 0 : m_capacity;
  }
  if (!m_isHeld.load(std::memory_order_relaxed) || ZEBFmBufferedFiles::hasProcessEnded()) {
    return 0;
  }
  const ZEBFmChannel& channel = m_writer->channel();
  return channel.isRegular() && channel.isOwned() && channel.appendIsAtomic() ? MOST_HELD : 0;
}

LOG4ZEB_INLINE inline int ZEBFmFile::append(const char* bytes, std::size_t size) {
  if (m_writer == nullptr) {
    return ZEBFmChannel::notOpenError();
  }
  if (!m_writer->channel().isOwned()) {
    const int error = seekTo(0, ORIGIN_END);
    if (error != 0) {
      return error;
    }
  }
  if (size == 0) {
    return 0;
  }
  const std::size_t most = room();
  if (m_buffer.size() + size > most) {
    const int error = m_buffer.empty() ? 0 : writeBuffer();
    if (error != 0) {
      return error;
    }
    if (size > most) {
      std::size_t written = 0;
      return m_writer->write(bytes, size, written);
    }
  }
  if (m_buffer.empty()) {
    m_buffer.reserve(std::min(most, MOST_HELD));
  }
  if (m_capacity == 0) {
    m_heldEnds.push_back(m_buffer.size() + size);
  }
  m_buffer.append(bytes, size);
  return 0;
}

LOG4ZEB_HOT std::int64_t ZEBFmFile::write(const char* bytes, std::size_t size) {
  const ZEBThreadInlineGuard guard(m_reference->section);
  const int error = append(bytes, size);
  return succeeded(error) != 0 ? static_cast<std::int64_t>(size) : -1;
}

/// Where what a buffer holds cannot be written, it goes on waiting.
int ZEBFmFile::writeBuffer() {
  if (m_buffer.empty()) {
    return 0;
  }
  if (!m_heldEnds.empty()) {
    writeHeld();
    return 0;
  }
  std::size_t written = 0;
  const int error = m_goesOn ? m_writer->goOn(m_buffer.data(), m_buffer.size(), written)
                             : m_writer->write(m_buffer.data(), m_buffer.size(), written);
  m_buffer.erase(0, written);
  m_goesOn = error != 0 && (m_goesOn || written != 0);
  return error;
}

/// Writes records that a hold lets wait, all at once or, where the system does not take all, one
/// by one: each that cannot be written is lost.
void ZEBFmFile::writeHeld() {
  std::size_t done = 0;
  m_writer->writeOnce(m_buffer.data(), m_buffer.size(), done);
  std::size_t begin = 0;
  for (const std::size_t end : m_heldEnds) {
    std::size_t written = std::clamp(done, begin, end) - begin;
    int error = 0;
    if (written < end - begin) {
      try {
        error = m_writer->write(m_buffer.data() + begin, end - begin, written);
      } catch (const std::bad_alloc&) {
        error = static_cast<int>(std::errc::not_enough_memory);
      }
    }
    if (error != 0) {
      ++m_lostRecords;
      m_lostError = error;
      m_lostBytes += end - begin;
    }
    begin = end;
  }
  m_buffer.clear();
  m_heldEnds.clear();
}

int ZEBFmFile::flush() {
  const ZEBThreadGuard guard(m_reference->section);
  return succeeded(m_writer == nullptr ? ZEBFmChannel::notOpenError() : writeBuffer());
}

int ZEBFmFile::close() {
  if (std::exchange(m_isEntered, false)) {
    ZEBFmBufferedFiles::remove(*this);
  }
  const ZEBThreadGuard guard(m_reference->section);
  if (m_writer == nullptr) {
    return 0;
  }
  const int error = writeBuffer();
  const int closing = m_writer->close();
  m_endsInHalf = m_writer->endsInHalf();
  m_writer.reset();
  m_capacity = 0;
  m_buffer.clear();
  m_goesOn = false;
  endHold();
  return succeeded(closing != 0 ? closing : error);
}

int ZEBFmFile::seek(std::int64_t offset, int origin) {
  const ZEBThreadGuard guard(m_reference->section);
  const int error = m_writer == nullptr ? ZEBFmChannel::notOpenError() : seekTo(offset, origin);
  return succeeded(error) != 0 ? 0 : -1;
}

int ZEBFmFile::seekTo(std::int64_t offset, int origin) {
  ZEBFmChannel& channel = m_writer->channel();
  const bool mayChange = !channel.isOwned();
  if (mayChange && !channel.isRegular()) {
    channel.look();
  }
  const bool isAtEnd = !mayChange && origin == ORIGIN_END && offset == 0;
  if (!channel.isRegular() || isAtEnd) {
    return 0;
  }
  writeBuffer();
  if (channel.seek(offset, origin) == 0) {
    return 0;
  }
  const int error = channel.getLastError();
  if (mayChange) {
    channel.look();
  }
  return channel.isRegular() ? error : 0;
}

std::int64_t ZEBFmFile::size() {
  const ZEBThreadGuard guard(m_reference->section);
  const std::int64_t written = m_writer == nullptr ? -1 : m_writer->channel().size();
  return written < 0 ? -1 : written + static_cast<std::int64_t>(m_buffer.size());
}

void ZEBFmFile::beginHold() {
  enterForEndOfProcess();
  m_isHeld = true;
}

ZEBFmFile::Losses ZEBFmFile::handOver() {
  const ZEBThreadGuard guard(m_reference->section);
  endHold();
  if (!m_heldEnds.empty()) {
    writeHeld();
  }
  const int records = std::exchange(m_lostRecords, 0);
  return records == 0 ? Losses() : Losses{m_name, records, m_lostError, m_lateFailureText};
}

std::size_t ZEBFmFile::takeLostBytes() {
  const ZEBThreadGuard guard(m_reference->section);
  return std::exchange(m_lostBytes, 0);
}

ZEBFmFile::Losses ZEBFmHold::handOver() {
  const std::shared_ptr<ZEBFmFile::Reference> reference = std::move(m_file);
  if (reference == nullptr) {
    return {};
  }
  const ZEBThreadGuard guard(reference->section);
  return reference->file == nullptr ? ZEBFmFile::Losses() : reference->file->handOver();
}
