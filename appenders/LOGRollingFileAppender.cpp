#include "appenders/LOGRollingFileAppender.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <typeinfo>
#include <utility>

#include "appenders/LOGCountingQuietWriter.h"
#include "appenders/LOGRolledFile.h"
#include "core/LOGFailures.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBFmDir.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"

namespace {

constexpr const char* SOURCE = "LOGRollingFileAppender";

constexpr LOGFailureTexts SET_FILE_TEXTS{
    "LOGRollingFileAppender::setFile -- some i18nstring exception occurred",
    "LOGRollingFileAppender::setFile -- some ZEBThrowable exception occurred",
    "LOGRollingFileAppender::setFile -- generic exception happened"};

/// Up to here every backup number is asked for; beyond, the directory is read instead.
constexpr int MOST_NUMBERS_ASKED_FOR = 64;

bool isFile(const I18NString& name) {
  return ZEBFmDir::exists(name, ZEBFmDir::READ_WRITE_FILE) != 0;
}

/// The number that `text` is in plain decimal without leading zeros, 0 if it is none.
int plainNumber(const std::string& text) {
  const int number = ZEBUtConvert::toInt(text);
  return number > 0 && ZEBUtConvert::handleCvt(number) == I18NString(text) ? number : 0;
}

/// The turn at a file while a scope runs; none when the program has set a writer of its own and no
/// file was opened.
class OptionalTurn {
 public:
  explicit OptionalTurn(std::shared_ptr<LOGRolledFile> file) : m_file(std::move(file)) {
    if (m_file != nullptr) {
      m_file->turn().enter();
    }
  }
  OptionalTurn(const OptionalTurn&) = delete;
  OptionalTurn& operator=(const OptionalTurn&) = delete;
  ~OptionalTurn() {
    if (m_file != nullptr) {
      m_file->turn().leave();
    }
  }

 private:
  const std::shared_ptr<LOGRolledFile> m_file;
};

/// A rollover goes on whatever a step throws.
template <typename Step>
bool attempt(Step step) noexcept {
  constexpr LOGFailureTexts TEXTS{
      "LOGRollingFileAppender::rollOver -- some i18nstring exception occurred",
      "LOGRollingFileAppender::rollOver -- some ZEBThrowable exception occurred",
      "LOGRollingFileAppender::rollOver -- generic exception happened"};
  return logContainingFailures(TEXTS, step);
}

}  // namespace

LOGRollingFileAppender::LOGRollingFileAppender() { instance(SOURCE); }

LOGRollingFileAppender::LOGRollingFileAppender(LOGLayout* layout, const I18NString& name)
    : LOGRollingFileAppender(layout, name, 1) {}

LOGRollingFileAppender::LOGRollingFileAppender(LOGLayout* layout, const I18NString& name,
                                               int append)
    : LOGRollingFileAppender() {
  setLayout(layout);
  LOGRollingFileAppender::setFile(name, append, 0, DEFAULT_BUFFER_SIZE);
}

LOGRollingFileAppender::LOGRollingFileAppender(const LOGRollingFileAppender& other)
    : LOGFileAppender(other),
      maxFileSize(other.maxFileSize.load()),
      maxBackupIndex(other.maxBackupIndex.load()),
      addProcID(other.addProcID.load()) {}

LOGRollingFileAppender::~LOGRollingFileAppender() = default;

void LOGRollingFileAppender::setMaximumFileSize(std::uint64_t bytes) {
  const ZEBThreadGuard guard(getCriticalSection());
  maxFileSize = bytes;
}

void LOGRollingFileAppender::setMaxBackupIndex(int index) {
  const ZEBThreadGuard guard(getCriticalSection());
  maxBackupIndex = index;
}

void LOGRollingFileAppender::setFile(const I18NString& name, int append, int bufferedSwitch,
                                     int size) {
  // What is not of the library's family has been reported by setFileOptions().
  constexpr LOGFailureTexts TEXTS{SET_FILE_TEXTS.stringError, SET_FILE_TEXTS.throwable, ""};
  openReporting(TEXTS, name, append, bufferedSwitch, size);
}

void LOGRollingFileAppender::setQWForFiles() {
  replaceWriter(nullptr);
  m_qw = zebTranslate(SOURCE, __LINE__,
                      [this] { return new LOGCountingQuietWriter(nullptr, m_file.get()); });
}

LOGCountingQuietWriter* LOGRollingFileAppender::countingWriter() const {
  // The usual writer without a search for its class, event by event.
  return m_qw != nullptr && typeid(*m_qw) == typeid(LOGCountingQuietWriter)
             ? static_cast<LOGCountingQuietWriter*>(m_qw)
             : dynamic_cast<LOGCountingQuietWriter*>(m_qw);
}

void LOGRollingFileAppender::setFileOptions(const I18NString& name, int append, int bufferedSwitch,
                                            int size) {
  const Reopening reopening(*this);
  logReportingFailures(SET_FILE_TEXTS, [&] {
    I18NString path = resolved(name);
    // Another appender must neither roll the file over nor empty it while this one opens it.
    try {
      m_rolledFile =
          zebTranslate(SOURCE, __LINE__, [&] { return LOGRolledFile::of(absoluteNameOf(path)); });
    } catch (...) {
      leaveToNextEvent(path);
      throw;
    }
    const OptionalTurn turn(m_rolledFile);
    m_rollovers = m_rolledFile->rollovers();
    const OpenResult result = open(SOURCE, std::move(path), append, bufferedSwitch, size);
    if (result == OpenResult::NotOpened) {
      LOGLogLog::error(
          "LOGRollingFileAppender::setFile -- LOGGING DISABLED -- UNABLE TO OPEN LOG FILE.");
    } else if (result == OpenResult::Opened) {
      countExistingBytes(append != 0 ? m_file->size() : 0);
    }
  });
}

void LOGRollingFileAppender::countExistingBytes(std::int64_t bytes) {
  constexpr std::int64_t MOST = std::numeric_limits<unsigned int>::max();
  m_isBeyondCounting = bytes >= MOST;
  if (countingWriter() != nullptr) {
    countingWriter()->setCount(static_cast<unsigned int>(std::clamp<std::int64_t>(bytes, 0, MOST)));
  }
}

bool LOGRollingFileAppender::isFull() const {
  // The next event would wrap the count of a file that was beyond counting when it was opened.
  constexpr std::uint64_t MOST = std::numeric_limits<unsigned int>::max();
  return countingWriter()->getCount() >= maxFileSize || (m_isBeyondCounting && MOST >= maxFileSize);
}

void LOGRollingFileAppender::subappend(LOGLoggingEvent* event) {
  // A resolver of names may log through the appender that is being opened.
  const bool isOwnReopening = isReopening();
  if (!isOwnReopening && hasBeenRolledOver()) {
    follow();
    if (m_closed == 1) {
      reportClosed();
      return;
    }
  }
  LOGFileAppender::subappend(event);
  if (!isOwnReopening && !fileName.isEmpty() && countingWriter() != nullptr && isFull() &&
      (countingWriter()->settle(m_file.get()), isFull())) {
    rollOverUnlessDone();
  }
}

/// The file that is rolled over is that of the name, which the program may have changed since one
/// was opened.
void LOGRollingFileAppender::takeName() {
  if (!isRemembered(fileName)) {
    auto file = LOGRolledFile::of(ZEBFmDir::absolutePath(fileName));
    remember(fileName);
    m_rolledFile = std::move(file);
    m_rollovers = m_rolledFile->rollovers();
  }
}

/// Returns false where the file goes on, and the next event tries again.
bool LOGRollingFileAppender::mayRollOver() {
  const bool wasOpen = m_closed == 0;
  // Before the turn at the file: code of the program may log through another appender of it.
  return attempt([this] {
           takeName();
           resolveAhead();
         }) &&
         !(wasOpen && m_closed == 1);
}

void LOGRollingFileAppender::rollOverUnlessDone() {
  if (!mayRollOver()) {
    return;
  }
  const OptionalTurn turn(m_rolledFile);
  if (hasBeenRolledOver()) {
    follow();
  } else {
    rollOver();
  }
}

bool LOGRollingFileAppender::hasBeenRolledOver() const {
  return m_rolledFile != nullptr && m_rolledFile->rollovers() != m_rollovers;
}

void LOGRollingFileAppender::reopen(int append) {
  setFileOptions(fileName, append, bufferedIO, bufferSize);
  if (m_closed == 1) {
    m_configuredAppend = 1;  // the next event tries again; others may write to the file by then
  }
}

I18NString LOGRollingFileAppender::backupName(const I18NString& base, int index) const {
  return index == 0 ? base : base + "." + ZEBUtConvert::handleCvt(index);
}

std::vector<int> LOGRollingFileAppender::candidateBackups() const {
  std::vector<int> numbers;
  if (maxBackupIndex <= MOST_NUMBERS_ASKED_FOR) {
    for (int i = maxBackupIndex - 1; i >= 1; --i) {
      numbers.push_back(i);
    }
    return numbers;
  }
  const auto [directory, file] = ZEBFmDir::splitPath(m_absoluteName);
  const std::string beginning = file.toStdString() + ".";
  const std::vector<std::string> entries = ZEBFmDir::list(directory);
  if (entries.empty()) {
    // Not even the log file shows: the directory cannot be read, so the backups are tried in turn.
    for (int i = 1; i < maxBackupIndex && isFile(backupName(m_absoluteName, i)); ++i) {
      numbers.push_back(i);
    }
  }
  for (const std::string& entry : entries) {
    if (entry.compare(0, beginning.size(), beginning) == 0) {
      const int number = plainNumber(entry.substr(beginning.size()));
      if (number >= 1 && number < maxBackupIndex) {
        numbers.push_back(number);
      }
    }
  }
  std::sort(numbers.begin(), numbers.end(), std::greater<>());
  return numbers;
}

void LOGRollingFileAppender::removeOldestBackup() const {
  const I18NString oldest = backupName(m_absoluteName, maxBackupIndex);
  if (isFile(oldest) && ZEBFmDir::removeFile(oldest) == 0) {
    LOGLogLog::error("LOGRollingFileAppender::rollOver ---- Could not remove the file: " +
                     backupName(fileName, maxBackupIndex));
  }
}

void LOGRollingFileAppender::renameReporting(int fromIndex, int toIndex) const {
  const I18NString from = backupName(m_absoluteName, fromIndex);
  // What the system has there, such as /dev/null and /dev/stdout, stays: all programs would miss
  // it. So does a directory, with all that is in it.
  if (ZEBFmDir::isDevice(from) != 0 || ZEBFmDir::exists(from, ZEBFmDir::DIRECTORY) != 0 ||
      ZEBFmDir::isLinkToOpenFile(from) != 0 ||
      ZEBFmDir::renameFile(from, backupName(m_absoluteName, toIndex)) == 0) {
    LOGLogLog::error("LOGRollingFileAppender::rollOver ---- Could not rename [" +
                     backupName(fileName, fromIndex) + "] to [" + backupName(fileName, toIndex) +
                     "]");
  }
}

void LOGRollingFileAppender::shiftBackups() const {
  for (const int i : candidateBackups()) {
    attempt([&] {
      if (isFile(backupName(m_absoluteName, i))) {
        renameReporting(i, i + 1);
      }
    });
  }
}

void LOGRollingFileAppender::rollOver() {
  ZEB_ASSERT(m_qw, SOURCE, 82);
  if (!mayRollOver()) {
    return;
  }
  const OptionalTurn turn(m_rolledFile);
  if (m_rolledFile != nullptr) {
    m_rolledFile->countRollover();
  }
  const Reopening reopening(*this);
  attempt([this] {
    const unsigned int count = countingWriter() == nullptr ? 0 : countingWriter()->getCount();
    LOGLogLog::debug("LOGRollingFileAppender::rollOver count " + ZEBUtConvert::handleCvt(count));
    LOGLogLog::debug("LOGRollingFileAppender::rollOver maxBackupIndex " +
                     ZEBUtConvert::handleCvt(maxBackupIndex));
  });
  if (maxBackupIndex >= 1) {
    const unsigned memoryFailures = logMemoryFailures();
    const auto hasLackedMemory = [=] { return logMemoryFailures() != memoryFailures; };
    attempt([this] { removeOldestBackup(); });
    attempt([this] { shiftBackups(); });
    if (hasLackedMemory()) {
      return;  // the file goes on, and the next event tries again
    }
    attempt([this] { closeFile(); });
    attempt([this] { renameReporting(0, 1); });
    if (hasLackedMemory()) {
      reopen(1);  // the file may still have its name
      return;
    }
  }
  reopen(0);
}
