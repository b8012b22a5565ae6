// Classes of a program that derive from those of the library and use every field and operation that
// these have for them. Built as C++17 and as C++20, with the library that a program is linked with.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGCountingQuietWriter.h"
#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "appenders/LOGRollingFileAppender.h"
#include "appenders/LOGWriter.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerFactory.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGFormattingInfo.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGLiteralPatternConverter.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGPatternParser.h"
#include "net/LOGLocalUDPAppender.h"
#include "platform/I18NConverter.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBFmDir.h"
#include "platform/ZEBSystemError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBUtConvert.h"
#include "rendering/LOGObjectRenderer.h"
#include "rendering/LOGRendererMap.h"

#if __cplusplus >= 202002L
#define PublicInterface PublicInterfaceInCxx20
#endif

namespace {

LOGLevel* const WARN = LOGLevel::toLevel("WARN");
LOGLevel* const INFO = LOGLevel::toLevel("INFO");

struct Event : LOGLoggingEvent {
  Event(LOGLevel* level, const I18NString& text, LOGObject message = LOGObject())
      : LOGLoggingEvent(LOGLogger::m_FQCN, LOGLogger::getLogger("public.interface"), level,
                        (message = text, &message)) {}
};

// ---- an appender, with its error handler, filter and layout ---------------------------------

class Handler : public LOGErrorHandler {
 public:
  explicit Handler(std::vector<std::string>& errors) : m_errors(errors) { instance("Handler"); }
  void activateOptions() override {}
  void setLogger(LOGLogger*) override {}
  void error(const I18NString& message, ZEBThrowable&, int, LOGLoggingEvent*) override {
    error(message);
  }
  void error(const I18NString& message, ZEBThrowable& e, int code) override {
    error(message, e, code, nullptr);
  }
  void error(const I18NString& message) override { m_errors.push_back(message.toStdString()); }
  void setAppender(LOGAppenderSkeleton*) override {}
  void setBackupAppender(LOGAppenderSkeleton*) override {}
  LOGObject* clone() const override { return new Handler(*this); }

 private:
  std::vector<std::string>& m_errors;
};

class Prefixing : public LOGOnlyOnceErrorHandler {
 public:
  using LOGOnlyOnceErrorHandler::error;
  void error(const I18NString& message) override {
    text += firstTime == 1 ? ERROR_PREFIX + message : WARN_PREFIX + message;
    firstTime = 0;
  }
  I18NString text;
};

class Turning : public LOGFilter {
 public:
  explicit Turning(int decision) : m_decision(decision) { instance("Turning"); }
  int decide(LOGLoggingEvent* event) override {
    switch (m_decision) {
      case LOGFilter::m_NEUTRAL:
        return next ? -next->decide(event) : m_NEUTRAL;
      case LOGFilter::m_ACCEPT:
        return m_ACCEPT;
      case LOGFilter::m_DENY:
        return m_DENY;
      default:
        return m_NEUTRAL;
    }
  }
  LOGObject* clone() const override { return new Turning(*this); }

 private:
  int m_decision;
};

class Shouting : public LOGLayout {
 public:
  Shouting() { instance("Shouting"); }
  const I18NString& format(LOGLoggingEvent* event) override {
    ZEBThreadGuard guard(*this);
    I18NString* message = event->getRenderedMessage();
    m_text = *message + "!";
    delete message;
    return m_text;
  }
  const I18NString& getContentType() override { return m_text; }
  const I18NString& getHeader() override { return m_text; }
  const I18NString& getFooter() override { return m_text; }
  int ignoresThrowable() override { return 0; }
  void activateOptions() override {}

 private:
  I18NString m_text;
};

/// Does in append() what the base does before it, and says what its fields are.
class Appender : public LOGAppenderSkeleton {
 public:
  Appender() { instance("Appender"); }
  ~Appender() override { finalize(); }
  void append(LOGLoggingEvent* event) override {
    ZEBThreadGuard guard(*this);
    LOGLayout* layout = m_layout;
    LOGErrorHandler* handler = m_errorHandler;
    LOGFilter* filter = m_headFilter;
    const LOGLevel* threshold = m_threshold;
    text += m_name + "(";
    text += layout != nullptr ? m_layout->format(event) : I18NString("no layout");
    if (m_threshold && threshold == m_threshold && !(m_threshold == nullptr)) {
      text += " up to " + std::to_string(m_threshold->toInt());
    }
    for (LOGFilter* f = m_headFilter; f; f = f == m_tailFilter ? nullptr : f->next) {
      text += f->decide(event) == LOGFilter::m_ACCEPT ? " accepted" : " not accepted";
    }
    if (filter != nullptr && m_headFilter != m_tailFilter && (*m_tailFilter).next == nullptr) {
      text += m_headFilter->next == m_tailFilter ? " of two" : " of more";
    }
    text += m_closed == 1 || m_stale == 1 ? " closed" : " open";
    text += ") ";
    if (handler && m_errorHandler != nullptr) {
      m_errorHandler->error(text);
    }
  }
  void close() override { m_closed = 1; }
  int requiresLayout() override { return m_layout ? 0 : 1; }
  /// Shares what `other` has, and takes another handler as a plain pointer is set.
  void become(const Appender& other, LOGErrorHandler* handler) {
    m_headFilter = other.m_headFilter;
    m_tailFilter = m_headFilter ? m_headFilter : other.m_tailFilter;
    m_layout = other.m_layout ? static_cast<Shouting*>(other.m_layout) : nullptr;
    m_threshold = other.m_threshold == WARN ? INFO : other.m_threshold;
    delete m_errorHandler;
    m_errorHandler = 0;
    m_errorHandler = NULL;
    m_errorHandler = handler;
    LOGLevel* changeable = (LOGLevel*)m_threshold;
    m_threshold = changeable;
  }
  I18NString text;
};

TEST(PublicInterface, OffersItsFieldsToAnAppenderOfTheProgram) {
  std::vector<std::string> errors;
  Shouting layout;
  Turning neutral(LOGFilter::m_NEUTRAL);
  Turning accepting(LOGFilter::m_ACCEPT);
  Appender appender;
  appender.setName("own");
  appender.setLayout(&layout);
  appender.setThreshold(WARN);
  appender.addFilter(&neutral);
  appender.addFilter(&accepting);
  appender.setErrorHandler(new Handler(errors));
  Event event(INFO, "it rains");
  appender.append(&event);
  EXPECT_EQ(appender.text, "own(it rains! up to 30000 not accepted accepted of two open) ");
  EXPECT_EQ(errors, std::vector<std::string>{appender.text.toStdString()});

  Appender other;
  other.setErrorHandler(new Prefixing);
  auto* const handler = new Prefixing;
  other.become(appender, handler);
  EXPECT_EQ(other.getErrorHandler(), handler);
  EXPECT_EQ(other.getThreshold(), INFO);
  EXPECT_EQ(other.getFilter(), &neutral);
  EXPECT_EQ(other.requiresLayout(), 0);
  EXPECT_EQ(I18NConverter("latin1").toText(ZEBUtConvert::handleCvt(7).toStdString()), "7");
  EXPECT_EQ(I18NLocale().compareIgnoreCase("Own", "oWN"), 0);
  EXPECT_EQ(ZEBFmDir::exists(".", ZEBFmDir::DIRECTORY), 1);
  other.append(&event);
  EXPECT_EQ(handler->text, "log4zeb error: (it rains! up to 20000 not accepted open) ");
}

// ---- appenders that write ---------------------------------------------------------------------

class Page : public LOGWriter {
 public:
  explicit Page(I18NString& text) : m_text(text) {}
  ~Page() override { m_text += "<end>"; }
  void write(const I18NString& text) override { m_text += text; }
  void flush() override { m_text += "<flush>"; }

 private:
  I18NString& m_text;
};

class Writing : public LOGWriterAppender {
 public:
  explicit Writing(I18NString& text) {
    encoding = "UTF-8";
    immediateFlush = 1;
    m_fileOpened = 1;
    m_qw = new LOGQuietWriter(new Page(text), m_errorHandler);
  }
  ~Writing() override { close(); }
  int checkEntryConditions() override { return m_closed != 1 && m_qw != nullptr && m_layout; }
  void subappend(LOGLoggingEvent* event) override {
    writeHeader();
    m_qw->write(m_layout->format(event));
    if (immediateFlush == 1) {
      m_qw->flush();
    }
    writeFooter();
  }
  void closeWriter() override {
    if (m_qw) {
      m_qw->close();
      delete m_qw;
      m_qw = nullptr;
      m_fileOpened = 0;
    }
  }
};

class Doubling : public LOGQuietWriter {
 public:
  Doubling(LOGErrorHandler* eh, ZEBFmFile* file) : LOGQuietWriter(eh, file) {}
  using LOGQuietWriter::write;
  void write(ZEBFmFile* file, const I18NString& s) override {
    if (!errorHandler && !writer) {
      LOGQuietWriter::stWrite(file, s + s);
    }
  }
};

class OwnFile : public LOGRollingFileAppender {
 public:
  explicit OwnFile(LOGLayout* layout) {
    setLayout(layout);
    maxFileSize = 1000;
    maxBackupIndex = addProcID = 0;
  }
  void setQWForFiles() override {
    delete m_qw;
    m_qw = nullptr;
    m_qw = fileAppend == 1 ? new LOGQuietWriter(nullptr, m_file) : new Doubling(nullptr, m_file);
  }
  void setFileOptions(const I18NString& name, int append, int buffered, int size) override {
    LOGRollingFileAppender::setFileOptions(name, append, buffered, size);
    m_qw->write(m_file, fileName + (bufferedIO == 1 ? " buffered " : " not buffered ") +
                            std::to_string(bufferSize) + "\n");
  }
  void subappend(LOGLoggingEvent* event) override {
    if (m_file && m_file->isOpen() != 0 && m_fileOpened != 0) {
      m_qw->write(m_file, m_layout->format(event));
    }
  }
};

class OwnConsole : public LOGConsoleAppender {
 public:
  using LOGConsoleAppender::LOGConsoleAppender;
  void subappend(LOGLoggingEvent* event) override {
    m_qw->stWrite(m_outFile, target + " " + m_layout->format(event) + "\n");
  }
  void setQWForFiles() override {
    delete m_qw;
    m_qw = nullptr;
    m_qw = new LOGQuietWriter(nullptr, m_outFile);
  }
  bool hasFile() const { return m_outFile != nullptr; }
};

TEST(PublicInterface, LetsAppendersOfTheProgramWriteAndFlush) {
  I18NString text;
  LOGPatternLayout layout("%m");
  Event event(INFO, "it rains");
  {
    Writing writing(text);
    writing.append(&event);
    writing.setLayout(&layout);
    writing.append(&event);
    writing.resetWriter();
    writing.append(&event);
  }
  EXPECT_EQ(text, "it rains<flush><flush><end>");

  const std::string name = testing::TempDir() + "publicInterface" + std::to_string(__cplusplus);
  OwnFile file(&layout);
  file.setFile(name, 0, 0, 512);
  EXPECT_EQ(file.checkEntryConditions(), 1);
  file.append(&event);
  file.resetWriter();
  std::ostringstream content;
  content << std::ifstream(name).rdbuf();
  const std::string first = name + " not buffered 512\n";
  EXPECT_EQ(content.str(), first + first + "it rainsit rains");
  std::remove(name.c_str());

  testing::internal::CaptureStdout();
  OwnConsole console(&layout, "OUT");
  EXPECT_EQ(console.checkEntryConditions(), 1);
  console.subappend(&event);
  console.closeWriter();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "OUT it rains\n");
  EXPECT_FALSE(console.hasFile());

  ZEBFmFile missing;
  EXPECT_EQ(missing.open(testing::TempDir() + "nowhere/at/all", ZEBFmFile::WRITE), 0);
  EXPECT_THROW(LOGQuietWriter::throwFileError(&missing), ZEBSystemError);
}

// ---- filters of the library, converters, a parser, layouts ------------------------------------

class Range : public LOGLevelRangeFilter {
 public:
  int decide(LOGLoggingEvent* event) override {
    levelMax = levelMax == nullptr ? WARN : levelMax;
    acceptOnMatch = levelMin == nullptr ? 1 : 0;
    return LOGLevelRangeFilter::decide(event);
  }
};
class Match : public LOGLevelMatchFilter {
 public:
  Match() { levelToMatch = acceptOnMatch == 1 ? WARN : nullptr; }
};
class Words : public LOGStringMatchFilter {
 public:
  Words() { stringToMatch = acceptOnMatch == 1 ? "rain" : ""; }
};

class Starred : public LOGPatternConverter {
 public:
  explicit Starred(LOGFormattingInfo* info) : LOGPatternConverter(info) {}
  I18NString* convert(LOGLoggingEvent* event) override { return event->getRenderedMessage(); }
  void format(I18NString& sbuf, LOGLoggingEvent* event) override {
    I18NString* text = convert(event);
    sbuf = "*" + *text;
    delete text;
    if (m_leftAlign == 1 && m_min > 0 && m_max == 2147483647) {
      spacePad(sbuf, m_min);
    }
    sbuf += getNext() == nullptr ? "." : ",";
  }
  void spacePad(I18NString& sbuf, int length) override {
    sbuf += SPACES[0];
    const I18NString rest = SPACES[1];
    sbuf.append(length > 2 ? rest : SPACES[5]);
  }
};

class Parser : public LOGPatternParser {
 public:
  explicit Parser(const I18NString& pattern) : LOGPatternParser(pattern) {}
  void finalizeConverter(const I18NString& ch) override {
    if (ch == "*") {
      LOGFormattingInfo info;
      addConverter(new Starred(&info));
    } else if (ch == "?") {
      I18NString* option = extractOption();
      addConverter(new LOGLiteralPatternConverter(option ? *option : "none"));
      delete option;
    } else {
      LOGPatternParser::finalizeConverter(ch);
    }
  }
  int precision() { return extractPrecisionOption(); }
};

TEST(PublicInterface, LetsFiltersConvertersAndParsersOfTheProgramDecideAndFormat) {
  Event info(INFO, "it rains");
  Event warn(WARN, "it snows");
  Range range;
  Match match;
  Words words;
  EXPECT_EQ(range.decide(&info), LOGFilter::m_ACCEPT);
  EXPECT_EQ(match.decide(&warn), LOGFilter::m_ACCEPT);
  EXPECT_EQ(words.decide(&info), LOGFilter::m_ACCEPT);
  EXPECT_EQ(words.decide(&warn), LOGFilter::m_NEUTRAL);

  Parser parser("a%?{b}%-4*");
  EXPECT_EQ(parser.precision(), 0);
  LOGPatternConverter* converter = parser.parse();
  std::string text;
  while (converter) {
    I18NString piece;
    converter->format(piece, &info);
    text += piece.toStdString();
    LOGPatternConverter* next = converter->getNext();
    delete converter;
    converter = next;
  }
  EXPECT_EQ(text, "ab*it rains   .");

  I18NString row;
  LOGHTMLLayout().appendThrowableAsHTML("<at>", row);
  EXPECT_NE(row.indexOf("&lt;at&gt;"), -1);
}

// ---- loggers and their factory, messages, renderers -------------------------------------------

class Audit : public LOGLogger {
 public:
  explicit Audit(const I18NString& name) : LOGLogger(name) {}
  void setLevel(LOGLevel* level) override { LOGLogger::setLevel(level ? level : WARN); }
  std::string state() {
    ZEBThreadGuard guard(*this);
    const LOGLevel* own = m_level;
    return m_name.toStdString() + (m_additive == 1 ? " additive " : " alone ") +
           (own && m_level ? m_level->toString() : "inherits") +
           (m_parent == LOGManager::getRootLogger() ? " below the root" : "") +
           (m_repository && m_repository->exists(m_name) == this ? " known " : " unknown ") +
           std::to_string(m_aai.isAttached(nullptr));
  }
  void audit(const I18NString& text) {
    LOGObject message = text;
    forcedLog(m_FQCN, m_level, &message);
  }
};

class Factory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return new Audit(name); }
};

class Order : public LOGObject {
 public:
  explicit Order(int number) {
    instance("Order");
    m_string = "order " + std::to_string(number);
  }
  const I18NString& toString() const override { return m_string; }
  LOGObject* clone() const override { return new Order(*this); }
};

class OrderRenderer : public LOGObjectRenderer {
 public:
  I18NString* doRender(LOGObject* object) override {
    return new I18NString("<" + object->toString() + ">");
  }
};

TEST(PublicInterface, TakesLoggersMessagesAndRenderersOfTheProgram) {
  Factory factory;
  auto* const audit = static_cast<Audit*>(LOGManager::getLogger("audit", &factory));
  EXPECT_EQ(audit->state(), "audit additive inherits below the root known 0");
  audit->setLevel(nullptr);
  EXPECT_EQ(audit->state(), "audit additive WARN below the root known 0");

  Appender appender;
  Shouting layout;
  appender.setLayout(&layout);
  audit->addAppender(&appender);
  LOGRendererMap().put("Order", new OrderRenderer);
  Order order(7);
  audit->error(&order);
  audit->info(&order);
  audit->audit("forced");
  audit->removeAppender(&appender);
  EXPECT_EQ(appender.text, "(<order 7>! open) (forced! open) ");

  EXPECT_EQ(LOGManager::m_DEFAULT_CONFIGURATION_FILE + LOGManager::m_DEFAULT_CONFIGURATION_KEY +
                LOGManager::m_CONFIGURATOR_CLASS_KEY + LOGManager::m_DEFAULT_INIT_OVERRIDE_KEY,
            "");
}

/// What ==, != and the two with exchanged operands say, as 1, 2, 4 and 8.
template <typename A, typename B>
int compared(const A& a, const B& b) {
  return (a == b ? 1 : 0) + (a != b ? 2 : 0) + (b == a ? 4 : 0) + (b != a ? 8 : 0);
}

TEST(PublicInterface, ComparesLoggersAndAppendersOfAllClasses) {
  constexpr int EQUAL = 1 + 4;
  constexpr int DIFFERENT = 2 + 8;
  const LOGLogger& logger = *LOGManager::getLogger("compared");
  LOGLogger& namesake = *LOGManager::getLogger("root");
  const LOGRootLogger root(WARN);
  const LOGObject& object = namesake;
  for (const int same : {compared(logger, logger), compared(root, namesake), compared(root, root),
                         compared(object, root), compared(object, namesake)}) {
    EXPECT_EQ(same, EQUAL);
  }
  EXPECT_EQ(compared(object, logger), DIFFERENT);
  EXPECT_EQ(compared(logger, root), DIFFERENT);

  LOGLocalUDPAppender udp;
  LOGLocalUDPAppender same;
  LOGLocalUDPAppender other;
  other.setPort(1);
  const LOGFileAppender file;
  const LOGAppenderSkeleton& skeleton = other;
  const LOGObject& appender = other;
  for (const int equal : {compared(udp, same), compared(file, file), compared(appender, other),
                          compared(appender, skeleton), compared(other, skeleton)}) {
    EXPECT_EQ(equal, EQUAL);
  }
  for (const int different : {compared(udp, other), compared(udp, file), compared(file, skeleton),
                              compared(file, LOGConsoleAppender()), compared(appender, file),
                              compared(appender, logger), compared(*WARN, *INFO)}) {
    EXPECT_EQ(different, DIFFERENT);
  }
}

}  // namespace
