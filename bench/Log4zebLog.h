#ifndef BENCH_LOG4ZEBLOG_H
#define BENCH_LOG4ZEBLOG_H

#include <filesystem>

#include "bench/LogUnderTest.h"

class LOGAsyncAppender;
class LOGLogger;

/// The library, set up from a document as an application does it: the appender is attached to the
/// root, and the logger that is used inherits it.
class Log4zebLog : public LogUnderTest {
 public:
  struct Setup {
    Delivery delivery = Delivery::Kernel;
    /// Bytes at which the file rolls over; 0 makes it a plain file.
    int rollAt = 0;
    /// Whether an asynchronous appender stands in front of the file.
    bool isAsynchronous = false;
  };

  Log4zebLog(const std::filesystem::path& directory, const Setup& setup);
  /// Writes a document that sets up what `setup` says, and returns its name. The level of the root
  /// is INFO.
  static std::filesystem::path writeDocument(const std::filesystem::path& directory,
                                             const Setup& setup);

  void log() override;
  void logNumber(int number) override;
  void drain() override;
  void finish() override;

 private:
  void applyToAppenders(const Setup& setup);

  LOGLogger* m_logger;
  LOGAsyncAppender* m_async = nullptr;
};

#endif
