#ifndef PLATFORM_ZEBFMHOLD_H
#define PLATFORM_ZEBFMHOLD_H

#include <memory>

#include "platform/ZEBFmFile.h"

/// Lets records of a file wait in memory, so that many go to the operating system in one call. It
/// belongs to a thread that delivers events, and has one file at a time, which may be destroyed
/// meanwhile. Records wait until handOver(), or until something else is done with their file; a
/// file with a buffer of its own keeps to that.
class LOG4ZEB_EXPORT ZEBFmHold {
 public:
  ZEBFmHold() = default;
  ZEBFmHold(const ZEBFmHold&) = delete;
  ZEBFmHold& operator=(const ZEBFmHold&) = delete;
  /// Writes what waits; what fails then is lost without a word.
  ~ZEBFmHold() { handOver(); }

  bool isOf(const ZEBFmFile& file) const noexcept { return m_file == file.m_reference; }
  /// Lets the records that are written from now on wait, in place of those of another file.
  /// REQUIRES: that file's were handed over.
  void begin(ZEBFmFile& file) {
    if (!isOf(file)) {
      m_file = file.m_reference;
    }
    file.beginHold();
  }
  /// Writes what waits. Returns what could not be written: records that would have failed alone.
  ZEBFmFile::Losses handOver();

 private:
  std::shared_ptr<ZEBFmFile::Reference> m_file;
};

#endif
