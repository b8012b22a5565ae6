#ifndef APPENDERS_LOGCOUNTINGQUIETWRITER_H
#define APPENDERS_LOGCOUNTINGQUIETWRITER_H

#include <atomic>

#include "appenders/LOGQuietWriter.h"

/// A quiet writer that counts the bytes that it has written, so that a rolling file knows when it
/// is full.
class LOG4ZEB_EXPORT LOGCountingQuietWriter : public LOGQuietWriter {
 public:
  LOGCountingQuietWriter(LOGErrorHandler* eh, ZEBFmFile* file);

  using LOGQuietWriter::write;
  /// As the base's; a failed write does not count.
  void write(ZEBFmFile* outStream, const I18NString& s) override;

  /// Has `file` hand over what it holds back, so that the count is that of what was written.
  void settle(ZEBFmFile* file);
  /// Bytes, modulo 2^32.
  unsigned int getCount() const { return count; }
  void setCount(unsigned int bytes) { count = bytes; }

 protected:
  std::atomic<unsigned int> count{0};
};

#endif
