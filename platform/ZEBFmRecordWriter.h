#ifndef PLATFORM_ZEBFMRECORDWRITER_H
#define PLATFORM_ZEBFMRECORDWRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/ZEBFmChannel.h"

/// Writes whole records to an open file or standard stream, without a buffer: in one call of the
/// operating system where that takes all of it. Where it takes only a part, because the disk is
/// full or the file has reached a limit, the rest follows under the operating system's lock on the
/// file. Where the rest cannot follow, the part is overwritten with a blank line, because half a
/// record is worse than none; it cannot be cut off, because another process may have appended
/// meanwhile.
///
/// An object is used by one thread at a time. Operations return 0 or the operating system's error.
class ZEBFmRecordWriter {
 public:
  explicit ZEBFmRecordWriter(std::unique_ptr<ZEBFmChannel> channel);
  ZEBFmRecordWriter(const ZEBFmRecordWriter&) = delete;
  ZEBFmRecordWriter& operator=(const ZEBFmRecordWriter&) = delete;
  ~ZEBFmRecordWriter();

  ZEBFmChannel& channel() const noexcept { return *m_channel; }

  /// Writes a record of which the first `written` bytes are at the file's end already, none of them
  /// for a new one. `written` becomes the number of bytes that are in the file in the end; after an
  /// error, those that could not be overwritten. The next record begins on a line of its own.
  int write(const char* bytes, std::size_t size, std::size_t& written);
  /// The same for the rest of a record whose beginning an error has left in the file.
  int goOn(const char* bytes, std::size_t size, std::size_t& written);
  /// Writes as many of these bytes as one call takes; `written` becomes their number.
  int writeOnce(const char* bytes, std::size_t size, std::size_t& written);

  /// Has the next record begin on a line of its own.
  void beginLine() { m_left.push_back({-1, 1}); }
  /// Whether the last record is a half that could neither be overwritten nor given a line end.
  bool endsInHalf() const noexcept { return !m_left.empty(); }
  int close();
  /// In the child of a fork, forgets halves of the parent's and parts the channel from it.
  void partFromParent() noexcept;

 private:
  /// A part of a record; `begin` is negative when its place is not known.
  struct Piece {
    std::int64_t begin;
    std::size_t size;
  };

  int writeWithCare(const char* bytes, std::size_t size, std::size_t& written);
  int complete(const char* bytes, std::size_t size, std::size_t& written);
  int writeRest(const char* bytes, std::size_t size, std::size_t& written);
  Piece endingHere(std::size_t size);
  static bool isApart(const Piece& piece, const Piece& next);
  void addLeft(const Piece& piece);
  bool blankOut(const Piece& piece);
  std::size_t leaveBehind(const Piece& piece);
  int endWhatWasLeft();

  const std::unique_ptr<ZEBFmChannel> m_channel;
  std::vector<Piece> m_left;  // of a lost record, and not overwritten
};

#endif
