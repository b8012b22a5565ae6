#ifndef APPENDERS_LOGQUIETWRITER_H
#define APPENDERS_LOGQUIETWRITER_H

#include <cstddef>

#include "core/LOGFailures.h"
#include "platform/I18NString.h"
#include "platform/ZEBFileLockRW.h"
#include "platform/ZEBFmHold.h"

class LOGErrorHandler;
class LOGWriter;

/// Writes records to a file, or to a LOGWriter, and reports failures through the diagnostics
/// instead of letting them reach the program that logs. It is also the lock of its file.
class LOG4ZEB_EXPORT LOGQuietWriter : public ZEBFileLockRW {
 public:
  /// A writer for `file`. Neither object is owned; the file must outlive the writer.
  LOGQuietWriter(LOGErrorHandler* eh, ZEBFmFile* file);
  /// A writer for `w`, which is not owned until close() destroys it.
  LOGQuietWriter(LOGWriter* w, LOGErrorHandler* eh);
  ~LOGQuietWriter() override;

  /// Hands a text that is not empty to the LOGWriter, if there is one.
  virtual void write(const I18NString& s);
  /// Appends the text to the file, as one record, under the file's lock, which is also the lock of
  /// a writer for that file. Failures are reported, once for each call; only what is not of the
  /// library's family also reaches the caller.
  virtual void write(ZEBFmFile* outStream, const I18NString& s);
  /// The same, followed by a flush: for callers that serialise themselves.
  virtual void stWrite(ZEBFmFile* outStream, const I18NString& s);

  /// The forms for a file throw ZEBAssertError when it is null, and report a failure; what was
  /// buffered goes on waiting after flush(), and is lost after close(). A file that is not open is
  /// no failure.
  void flush(ZEBFmFile* outStream);
  void close(ZEBFmFile* outStream);
  /// The forms for the LOGWriter do nothing when there is none; close() flushes and destroys it.
  void flush();
  void close();

  /// Writes the records of a hold or file that wait, and reports what fails as write() would have
  /// done.
  static void handOver(ZEBFmHold& hold) { report(hold.handOver()); }
  static void handOver(ZEBFmFile& file) { report(file.handOver()); }
  /// Lets the records that are written to the file from now on wait; those of another file go
  /// first.
  static void hold(ZEBFmHold& hold, ZEBFmFile& file);

  /// The handler is not owned, and never called here.
  void setErrorHandler(LOGErrorHandler* eh) { errorHandler = eh; }

  /// Throws a ZEBSystemError with the file's name and its last error.
  [[noreturn]] static void throwFileError(ZEBFmFile* file);

 protected:
  /// Appends the text to the file's end and returns how many bytes that were. Throws
  /// ZEBSystemError.
  static std::size_t appendBytes(ZEBFmFile& file, const I18NString& s);

  static void report(const ZEBFmFile::Losses& losses);

  LOGErrorHandler* errorHandler;
  LOGWriter* writer;
};

#endif
