#ifndef BENCH_LOGUNDERTEST_H
#define BENCH_LOGUNDERTEST_H

/// A log that a benchmark writes events to: the library or a peer, set up to write into one
/// directory. Setting up is the constructor's work.
class LogUnderTest {
 public:
  /// Where an event is when log() returns.
  enum class Delivery { Kernel, Buffered };

  LogUnderTest() = default;
  LogUnderTest(const LogUnderTest&) = delete;
  LogUnderTest& operator=(const LogUnderTest&) = delete;
  virtual ~LogUnderTest() = default;

  /// Logs the event of the workload. Any thread may call it.
  virtual void log() = 0;
  /// Logs an event whose message, the same text, is formatted with one number. Logs that are not
  /// measured with it throw std::logic_error.
  virtual void logNumber(int number);
  /// Waits until nothing is queued. Logs without a queue have nothing to do.
  virtual void drain() {}
  /// Ends the log: everything is in its files when it returns. Called once.
  virtual void finish() = 0;
};

#endif
