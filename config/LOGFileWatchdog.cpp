#include "config/LOGFileWatchdog.h"

#include <chrono>
#include <utility>

#include "core/LOGFailures.h"
#include "platform/ZEBFmDir.h"

constexpr std::size_t STACK_SIZE = 4096000;

std::atomic<unsigned int> LOGFileWatchdog::m_delay{DEFAULT_DELAY};
std::atomic<std::int64_t> LOGFileWatchdog::m_lastModified{0};
std::atomic<int> LOGFileWatchdog::m_interrupted{0};

LOGFileWatchdog::LOGFileWatchdog(const I18NString& fileName)
    : ZEBThread(STACK_SIZE), m_fileName(fileName) {
  m_delay = DEFAULT_DELAY;
  m_lastModified = 0;
  m_interrupted = 0;
  checkAndConfigure();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): as documented
}

LOGFileWatchdog::~LOGFileWatchdog() { LOGFileWatchdog::stop(); }

void LOGFileWatchdog::checkAndConfigure() {
  constexpr LOGFailureTexts TEXTS{
      "LOGFileWatchdog::checkAndConfigure -- some i18nstring exception occurred",
      "LOGFileWatchdog::checkAndConfigure -- some ZEBThrowable exception occurred",
      "LOGFileWatchdog::checkAndConfigure -- some generic error occurred"};
  logContainingFailures(TEXTS, [this] {
    const std::int64_t modified = ZEBFmDir::modificationTime(m_fileName);
    if (modified == ZEBFmDir::NO_TIME) {
      m_interrupted = 1;
      LOGLogLog::warn("Was not allowed to read check file existance, file:[" + m_fileName + "].");
    } else if (modified > m_lastModified) {
      m_lastModified = modified;
      m_hasSeenChange = true;
      doOnChange();
    }
  });
}

void LOGFileWatchdog::start() {
  bool hasEnded = false;
  {
    const std::lock_guard<std::mutex> lock(m_stopLock);
    m_stopRequested = false;
    hasEnded = std::exchange(m_hasEnded, false);
  }
  if (hasEnded) {
    join();
  }
  ZEBThread::start();
}

void LOGFileWatchdog::stop() {
  {
    const std::lock_guard<std::mutex> lock(m_stopLock);
    m_stopRequested = true;
    m_stopped.notify_all();
  }
  join();
}

void LOGFileWatchdog::renewInChild() {
  ZEBForkHandler::renew(m_stopLock);
  ZEBForkHandler::renew(m_stopped);
  m_stopRequested = false;  // whoever asked for it is not here
}

bool LOGFileWatchdog::waitForNextLook() {
  std::unique_lock<std::mutex> lock(m_stopLock);
  m_hasEnded = m_stopped.wait_for(lock, std::chrono::milliseconds(m_delay.load()),
                                  [this] { return m_stopRequested; });
  return !m_hasEnded;
}

void LOGFileWatchdog::run() {
  while (m_interrupted == 0 && waitForNextLook()) {
    checkAndConfigure();
  }
  const std::lock_guard<std::mutex> lock(m_stopLock);
  m_hasEnded = true;
}
