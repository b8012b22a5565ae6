#include "tools/CheckComponentRules.h"

#include <algorithm>
#include <memory>

#include "appenders/LOGWriterAppender.h"
#include "config/LOGComponentFactory.h"
#include "tools/CheckPattern.h"
#include "tools/CheckWords.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* SYSLOG = "LOGSyslogAppender";
constexpr const char* ASYNC = "LOGAsyncAppender";
constexpr const char* TCP = "LOGTCPSocketAppender";
constexpr const char* DENY_ALL = "LOGDenyAllFilter";

bool contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string assignment(const std::string& name, const std::string& value) {
  return name + "=" + CheckWords::quoted(value);
}

/// An appender tells by itself whether it needs one, but for those that write text, which say no
/// and write nothing without a layout.
bool needsLayout(const std::string& className) {
  const std::unique_ptr<LOGAppenderSkeleton> appender = LOGComponentFactory::newAppender(className);
  return appender != nullptr && (appender->requiresLayout() != 0 ||
                                 dynamic_cast<const LOGWriterAppender*>(appender.get()) != nullptr);
}

}  // namespace

void CheckComponentRules::checkAll() {
  for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
    checkAppender(appender);
  }
}

bool CheckComponentRules::checkClass(const ZEBIDOM_Element& element, const Words& classes,
                                     const std::string& consequence) {
  const std::string name = CheckedDocument::classOf(element);
  if (contains(classes, name)) {
    return true;
  }
  const auto meant = CheckWords::nearest(name, classes);
  m_findings.warn("unknown-class", element, "class",
                  "there is no " + CheckedDocument::tag(element) + " of class " +
                      CheckWords::quoted(name) + ": " + consequence,
                  meant ? assignment("class", *meant) : CheckWords::oneOf(classes));
  return false;
}

void CheckComponentRules::checkAppender(const ZEBIDOM_Element& appender) {
  if (!checkClass(appender, LOGComponentFactory::appenderClasses(),
                  "the appender is not built, and references to it are left out")) {
    return;
  }
  const std::string name = CheckedDocument::classOf(appender);
  m_params.checkParams(appender);
  checkLayouts(appender);
  for (const ZEBIDOM_Element& filter : CheckedDocument::children(appender, "filter")) {
    checkFilter(filter);
  }
  for (const ZEBIDOM_Element& handler : CheckedDocument::children(appender, "errorHandler")) {
    checkErrorHandler(handler);
  }
  if (name == ASYNC && CheckedDocument::children(appender, "appender-ref").empty()) {
    m_findings.warn("async-without-appender", appender, "",
                    "the asynchronous appender passes events on to no appender, so they are lost",
                    "<appender-ref ref=\"...\"/> inside of it");
  } else if (name == TCP) {
    m_findings.warn("sends-nothing", appender, "class",
                    "LOGTCPSocketAppender keeps its options and sends nothing: every event is lost",
                    "class=\"LOGSyslogAppender\" or class=\"LOGLocalUDPAppender\"");
  }
}

void CheckComponentRules::checkLayouts(const ZEBIDOM_Element& appender) {
  const std::string name = CheckedDocument::classOf(appender);
  const std::vector<ZEBIDOM_Element> layouts = CheckedDocument::children(appender, "layout");
  if (layouts.empty() && needsLayout(name)) {
    m_findings.warn("no-layout", appender, "", "the appender has no layout, so it writes nothing",
                    name == SYSLOG
                        ? "<layout class=\"LOGPatternLayout\"> with a pattern without %n at its end"
                        : "<layout class=\"LOGSimpleLayout\"/> or another one inside of it");
  }
  for (const ZEBIDOM_Element& layout : layouts) {
    if (!checkClass(layout, LOGComponentFactory::layoutClasses(),
                    "the appender has no layout by this element")) {
      continue;
    }
    m_params.checkParams(layout);
    if (!needsLayout(name)) {
      m_findings.warn(
          "layout-without-effect", layout, "", "a layout has no effect in " + name,
          name == ASYNC ? "the layout in the appenders that it refers to" : "leave it out");
    } else if (layout != *std::find_if(layouts.rbegin(), layouts.rend(), [](const auto& other) {
                 return contains(LOGComponentFactory::layoutClasses(),
                                 CheckedDocument::classOf(other));
               })) {
      m_findings.warn("duplicate-layout", layout, "",
                      "there is a layout after this one; the last one counts", "one <layout>");
    } else {
      checkLineEnd(layout, name);
    }
  }
}

void CheckComponentRules::checkLineEnd(const ZEBIDOM_Element& layout,
                                       const std::string& appenderClass) {
  const std::string name = CheckedDocument::classOf(layout);
  const ZEBIDOM_Element param = name == "LOGPatternLayout"
                                    ? CheckedDocument::paramOf(layout, "ConversionPattern", true)
                                    : ZEBIDOM_Element();
  if (!param.isNull()) {
    const CheckPattern pattern(CheckedDocument::attribute(param, "value"));
    if (appenderClass == SYSLOG && pattern.endsWithLineEnd()) {
      m_findings.warn("syslog-line-end", param, "value",
                      "a datagram is one message: the line end of the pattern becomes a part of it",
                      "the pattern without %n at its end");
    } else if (appenderClass != SYSLOG && !pattern.hasLineEnd()) {
      m_findings.warn("no-line-end", param, "value",
                      "the pattern has no line end: all events become one line", "%n at its end");
    }
  } else if (appenderClass == SYSLOG) {
    m_findings.warn("syslog-line-end", layout, "",
                    "a datagram is one message, and this layout ends each with a line end",
                    "class=\"LOGPatternLayout\" with a pattern without %n at its end");
  }
}

void CheckComponentRules::checkFilter(const ZEBIDOM_Element& filter) {
  Words classes = LOGComponentFactory::filterClasses();
  classes.insert(classes.end(), {DENY_ALL, "LOGLogUVDDyeTraceFilter"});
  if (!checkClass(filter, classes, "it becomes a filter that denies every event")) {
    return;
  }
  m_params.checkParams(filter);
}

void CheckComponentRules::checkErrorHandler(const ZEBIDOM_Element& handler) {
  checkClass(handler, LOGComponentFactory::errorHandlerClasses(),
             "it becomes a handler that does nothing");
  m_findings.warn(
      "error-handler", handler, "",
      "the appenders of the library report failures in the diagnostics and never call an error "
      "handler",
      "leave it out");
  for (const ZEBIDOM_Element& param : CheckedDocument::children(handler, "param")) {
    m_params.warnOfIgnored(param, CheckedDocument::classOf(handler));
  }
}
