#include "appenders/LOGFileAppender.h"

#include <utility>

#include "appenders/LOGQuietWriter.h"
#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBConfigurationFactory.h"
#include "platform/ZEBFmDir.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGFileAppender";

}  // namespace

LOGFileAppender::LOGFileAppender() {
  instance(SOURCE);
  m_closed = 1;
}

LOGFileAppender::LOGFileAppender(LOGLayout* layout, const I18NString& name, int append,
                                 int bufferedSwitch, int size)
    : LOGFileAppender() {
  setLayout(layout);
  LOGFileAppender::setFile(name, append, bufferedSwitch, size);
}

LOGFileAppender::LOGFileAppender(LOGLayout* layout, const I18NString& name, int append)
    : LOGFileAppender(layout, name, append, 0, DEFAULT_BUFFER_SIZE) {}

LOGFileAppender::LOGFileAppender(LOGLayout* layout, const I18NString& name)
    : LOGFileAppender(layout, name, 1) {}

LOGFileAppender::LOGFileAppender(const LOGFileAppender& other)
    : LOGWriterAppender(other),
      fileAppend(other.fileAppend.load()),
      m_configuredAppend(other.m_configuredAppend),
      fileName(other.fileName),
      bufferedIO(other.bufferedIO.load()),
      bufferSize(other.bufferSize.load()),
      m_unresolvedName(other.m_unresolvedName) {
  m_closed = 1;
}

LOGFileAppender::~LOGFileAppender() {
  // The writer reports what is lost.
  logContainingFailures(LOGFailureTexts::same("LOGFileAppender::~LOGFileAppender"),
                        [this] { LOGFileAppender::closeFile(); });
  delete m_qw;
  m_qw = nullptr;
}

LOG4ZEB_HOT void LOGFileAppender::activateOptions() {
  if (!mayOpenByItself()) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  // A resolver of names may log through the appender that is being opened.
  if (mayOpenByItself() && !isReopening() && !fileName.isEmpty()) {
    // As far as others can see, the appender is closed until the opening has come to its end.
    const Reopening reopening(*this);
    const bool goesOn = m_unresolvedName.isEmpty() || isRemembered(fileName);
    setFile(goesOn ? fileName : m_unresolvedName, m_configuredAppend, bufferedIO, bufferSize);
  }
}

void LOGFileAppender::setFile(const I18NString& name) {
  const ZEBThreadGuard guard(getCriticalSection());
  fileName = name;
  m_unresolvedName.clear();
}

void LOGFileAppender::setFile(const I18NString& name, int append, int bufferedSwitch, int size) {
  constexpr LOGFailureTexts TEXTS{
      "LOGFileAppender::setFileOptions -- some i18nstring exception occurred",
      "LOGFileAppender::setFileOptions -- some ZEBThrowable exception occurred",
      "LOGFileAppender::setFileOptions -- generic exception happened"};
  openReporting(TEXTS, name, append, bufferedSwitch, size);
}

void LOGFileAppender::openReporting(const LOGFailureTexts& texts, const I18NString& name,
                                    int append, int bufferedSwitch, int size) {
  if (m_closed == 0 && !isReopening()) {
    return;
  }
  logReportingFailures(texts, [&] {
    const ZEBThreadGuard guard(getCriticalSection());
    if (m_closed != 0) {
      if (m_closeRequested.exchange(false)) {
        m_absoluteName.clear();  // a new beginning, perhaps from another working directory
      }
      m_configuredAppend = append;
      bufferedIO = bufferedSwitch;
      bufferSize = size;
      setFileOptions(name, append, bufferedSwitch, size);
    }
  });
}

I18NString LOGFileAppender::getFileCopy() const {
  const ZEBThreadGuard guard(getCriticalSection());
  return fileName;
}

void LOGFileAppender::setAppend(int append) {
  const ZEBThreadGuard guard(getCriticalSection());
  fileAppend = append;
  m_configuredAppend = append;
}

void LOGFileAppender::setBufferSize(int size) {
  const ZEBThreadGuard guard(getCriticalSection());
  bufferSize = size;
}

void LOGFileAppender::setBufferedIO(int value) {
  const ZEBThreadGuard guard(getCriticalSection());
  bufferedIO = value;
  if (value == 1) {
    setImmediateFlush(0);
  }
}

LOG4ZEB_HOT int LOGFileAppender::checkEntryConditions() {
  return m_closed != 1 && m_qw != nullptr ? 1 : 0;
}

LOG4ZEB_HOT void LOGFileAppender::subappend(LOGLoggingEvent* event) {
  if (m_fileOpened == 0) {
    return;
  }
  ZEB_ASSERT(m_qw, SOURCE, __LINE__);
  if (layout() == nullptr) {
    return;
  }
  if (m_isTextUsed) {  // rendering a message logs through this appender
    I18NString text;
    writeText(event, text);
    return;
  }
  struct Use {
    bool& isUsed;
    ~Use() { isUsed = false; }
  };
  m_isTextUsed = true;
  const Use use{m_isTextUsed};
  writeText(event, m_text);
}

LOG4ZEB_HOT void LOGFileAppender::writeText(LOGLoggingEvent* event, I18NString& text) {
  format(*layout(), event, text);
  if (LOGFileAppender::checkEntryConditions() == 0) {
    return;  // rendering the message has closed this appender
  }
  ZEBFmHold* const hold = event->getHold();
  if (hold != nullptr && m_file != nullptr) {
    LOGQuietWriter::hold(*hold, *m_file);
  } else if (m_file != nullptr) {
    m_file->endHold();
  }
  m_qw->write(m_file, text);
  if (immediateFlush == 1) {
    m_qw->flush(m_file);
  }
}

void LOGFileAppender::handOver() {
  const ZEBThreadGuard guard(getCriticalSection());
  if (m_file != nullptr) {
    LOGQuietWriter::handOver(*m_file);
  }
}

void LOGFileAppender::replaceWriter(LOGQuietWriter* writer) { delete std::exchange(m_qw, writer); }

void LOGFileAppender::setQWForFiles() {
  replaceWriter(
      zebTranslate(SOURCE, __LINE__, [this] { return new LOGQuietWriter(nullptr, m_file); }));
}

void LOGFileAppender::closeFile() {
  if (m_qw != nullptr && m_file != nullptr) {
    m_qw->close(m_file);
  }
  m_closed = 1;
}

void LOGFileAppender::resetWriter() {
  closeFile();
  fileName.clear();
  LOGWriterAppender::resetWriter();
}

void LOGFileAppender::setFileOptions(const I18NString& name, int append, int bufferedSwitch,
                                     int size) {
  if (m_closed != 0) {
    const Reopening reopening(*this);
    open(SOURCE, resolved(name), append, bufferedSwitch, size);
  }
}

LOGFileAppender::OpenResult LOGFileAppender::open(const char* className, I18NString path,
                                                  int append, int bufferedSwitch, int size) {
  bool wasReset = false;
  try {
    if (instanceOf() != className) {
      instance(className);  // not written again: other threads compare appenders without the lock
    }
    if (bufferedSwitch == 1) {
      setImmediateFlush(0);
    }
    wasReset = true;
    resetWriter();
    const bool wasRemembered = !m_absoluteName.isEmpty();
    const OpenResult result = openRemembered(path, append, bufferedSwitch, size);
    if (result != OpenResult::Opened) {
      m_closed = 1;
      m_fileOpened = 0;
      if (!wasRemembered) {
        m_absoluteName.clear();  // the working directory counts in which the file is opened
      }
    }
    return result;
  } catch (...) {
    if (wasReset) {
      m_closed = 1;
      fileName = std::move(path);
    }
    leaveToNextEvent(wasReset ? fileName : path);
    throw;
  }
}

void LOGFileAppender::leaveToNextEvent(const I18NString& name) {
  if (m_closed != 0) {
    m_fileOpened = 0;
    if (&name != &fileName) {
      fileName = name;
    }
  }
}

I18NString LOGFileAppender::resolved(const I18NString& name) {
  const bool isResolved = !m_unresolvedName.isEmpty() && isRemembered(name);
  try {
    I18NString requested = name;  // which may be this object's own
    if (isResolved) {
      return requested;
    }
    I18NString path = m_ahead.has_value() && m_ahead->first == requested
                          ? m_ahead->second
                          : ZEBConfigurationFactory::getInstance()->resolvePath(requested);
    m_ahead.reset();
    m_unresolvedName = std::move(requested);
    return path;
  } catch (...) {
    leaveToNextEvent(name);
    if (m_closed != 0 && !isResolved) {
      m_unresolvedName.clear();
    }
    throw;
  }
}

void LOGFileAppender::resolveAhead() {
  const bool isKnown = !m_unresolvedName.isEmpty() || (m_ahead && m_ahead->first == fileName);
  if (!isKnown) {
    const Reopening reopening(*this);  // what is logged meanwhile neither opens nor rolls over
    I18NString name = fileName;
    I18NString path = ZEBConfigurationFactory::getInstance()->resolvePath(name);
    m_ahead.emplace(std::move(name), std::move(path));
  }
}

I18NString LOGFileAppender::absoluteNameOf(const I18NString& path) const {
  return isRemembered(path) ? m_absoluteName : ZEBFmDir::absolutePath(path);
}

bool LOGFileAppender::isRemembered(const I18NString& name) const {
  return !m_absoluteName.isEmpty() && m_absoluteNameSource == name;
}

void LOGFileAppender::remember(const I18NString& name) {
  if (!isRemembered(name)) {
    m_absoluteName = ZEBFmDir::absolutePath(name);
    m_absoluteNameSource = name;
  }
}

LOGFileAppender::OpenResult LOGFileAppender::openRemembered(const I18NString& path, int append,
                                                            int bufferedSwitch, int size) {
  fileName = path;
  fileAppend = append;
  bufferedIO = bufferedSwitch;
  bufferSize = size;
  remember(fileName);
  const I18NString directory = ZEBFmDir::splitPath(fileName).first;
  const I18NString absoluteDirectory = ZEBFmDir::splitPath(m_absoluteName).first;
  if (!directory.isEmpty() && ZEBFmDir::exists(absoluteDirectory, ZEBFmDir::DIRECTORY) == 0) {
    LOGLogLog::debug(instanceOf() + "::setFile -- " + directory + " directory does not exist");
    return OpenResult::NoDirectory;
  }
  if (m_file == nullptr) {
    m_file = std::make_unique<ZEBFmFile>();
  }
  const int mode = append == 1 ? ZEBFmFile::APPEND : ZEBFmFile::TRUNCATE;
  if (m_file->open(m_absoluteName, mode) == 0 &&
      m_file->open(m_absoluteName, ZEBFmFile::WRITE) == 0) {
    return OpenResult::NotOpened;
  }
  if (bufferedSwitch == 1 && size > 0) {
    m_file->setBufferSize(static_cast<std::size_t>(size));
  }
  setQWForFiles();
  m_closed = 0;
  m_fileOpened = 1;
  writeHeader();
  if (m_qw != nullptr) {
    m_qw->flush(m_file);
  }
  return OpenResult::Opened;
}
