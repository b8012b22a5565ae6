#ifndef CONFIG_LOGFILEWATCHDOG_H
#define CONFIG_LOGFILEWATCHDOG_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/I18NString.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThread.h"

/// A thread that looks at a file's time of modification again and again, and calls doOnChange()
/// when it has advanced. The host constructs one, which looks for the first time, and starts it.
///
/// Deliberate: delay, time last seen and the flag that ends the polling are one set for all
/// watchdogs of the process. A new watchdog resets them for the others too, and a file that cannot
/// be read ends them all. In the child of a fork nothing is polled until a watchdog is started
/// there.
class LOG4ZEB_EXPORT LOGFileWatchdog : public ZEBThread {
 public:
  static constexpr unsigned int DEFAULT_DELAY = 6000;

  /// Resets what is shared and looks at the file once, on the calling thread. doOnChange() of a
  /// derived class is not reached by that.
  explicit LOGFileWatchdog(const I18NString& fileName);
  /// Stops and waits for the thread. A derived class calls stop() in its own destructor, because
  /// the thread may be in its doOnChange().
  ~LOGFileWatchdog() override;

  /// Milliseconds between two looks, for all watchdogs.
  static void setDelay(unsigned int milliseconds) { m_delay = milliseconds; }
  /// Looks at the file once. A file that cannot be read ends the polling of every watchdog.
  void checkAndConfigure();
  /// Begins the watching, also once more after stop(), and does nothing while it goes on. Throws
  /// ZEBSystemError when the operating system gives no thread. Calls of start() and stop() by
  /// several threads are serialised by the caller.
  void start();
  /// Ends this watchdog's thread and waits for it; on that thread itself it does not wait.
  void stop();
  void run() override;
  /// Does nothing here. Called on the watchdog's thread.
  virtual void doOnChange() {}

 protected:
  const I18NString& getFileName() const { return m_fileName; }
  /// Whether a look has seen a change, the first sight of the file included.
  bool hasSeenChange() const { return m_hasSeenChange; }

 private:
  bool waitForNextLook();
  void renewInChild();

  static std::atomic<unsigned int> m_delay;
  static std::atomic<std::int64_t> m_lastModified;  // nanoseconds since 1970-01-01 00:00 UTC
  static std::atomic<int> m_interrupted;

  I18NString m_fileName;
  std::atomic<bool> m_hasSeenChange{false};
  std::mutex m_stopLock;
  std::condition_variable m_stopped;
  bool m_stopRequested = false;  // guarded by m_stopLock
  bool m_hasEnded = false;       // the thread, or it is about to; guarded by m_stopLock
  const ZEBForkHandler m_forkHandler{
      this, [](void* watchdog) { static_cast<LOGFileWatchdog*>(watchdog)->renewInChild(); }};
};

#endif
