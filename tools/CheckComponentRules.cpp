#include <algorithm>
#include <memory>

#include "appenders/LOGWriterAppender.h"
#include "config/LOGComponentFactory.h"
#include "tools/CheckPattern.h"
#include "tools/CheckRules.h"
#include "tools/CheckWords.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* SYSLOG = "LOGSyslogAppender";
constexpr const char* ASYNC = "LOGAsyncAppender";

/// An appender tells by itself whether it needs one, but for those that write text, which say no
/// and write nothing without a layout.
bool needsLayout(const std::string& className) {
  const auto appender = LOGComponentFactory::make<LOGAppenderSkeleton>("appender", className);
  return appender != nullptr && (appender->requiresLayout() != 0 ||
                                 dynamic_cast<const LOGWriterAppender*>(appender.get()) != nullptr);
}

class ComponentRules : CheckRuleSet {
 public:
  using CheckRuleSet::CheckRuleSet;

  void checkAppender(const CheckElement& appender) {
    if (!checkClass(appender, "the appender is not built, and references to it are left out")) {
      return;
    }
    const std::string name = appender.className();
    CheckRules::checkParams(appender, m_findings);
    checkLayouts(appender, name);
    for (const CheckElement& filter : appender.children("filter")) {
      if (checkClass(filter, "it becomes a filter that denies every event")) {
        CheckRules::checkParams(filter, m_findings);
      }
    }
    for (const CheckElement& handler : appender.children("errorHandler")) {
      checkErrorHandler(handler);
    }
    if (name == ASYNC && appender.children("appender-ref").empty()) {
      warn("async-without-appender", appender, "",
           "the asynchronous appender passes events on to no appender, so they are lost",
           "<appender-ref ref=\"...\"/> inside of it");
    } else if (name == "LOGTCPSocketAppender") {
      warn("sends-nothing", appender, "class",
           "LOGTCPSocketAppender keeps its options and sends nothing: every event is lost",
           "class=\"LOGSyslogAppender\" or class=\"LOGLocalUDPAppender\"");
    }
  }

 private:
  bool checkClass(const CheckElement& element, const std::string& consequence) {
    const std::string name = element.className();
    Words classes = LOGComponentFactory::classes(element.tag());
    if (element.tag() == "filter") {
      classes.insert(classes.end(), {"LOGDenyAllFilter", "LOGLogUVDDyeTraceFilter"});
    }
    const bool isKnown = CheckWords::contains(classes, name);
    if (!isKnown) {
      const auto meant = CheckWords::nearest(name, classes);
      warn("unknown-class", element, "class", "there is no {} of class \"{}\": {}", "{}",
           {element.tag(), name, consequence,
            meant ? "class=\"" + *meant + "\"" : CheckWords::oneOf(classes)});
    }
    return isKnown;
  }

  void checkLayouts(const CheckElement& appender, const std::string& className) {
    const std::vector<CheckElement> layouts = appender.children("layout");
    const bool isNeeded = needsLayout(className);
    warnIf(layouts.empty() && isNeeded, "no-layout", appender, "",
           "the appender has no layout, so it writes nothing",
           className == SYSLOG
               ? "<layout class=\"LOGPatternLayout\"> with a pattern without %n at its end"
               : "<layout class=\"LOGSimpleLayout\"/> or another one inside of it");
    CheckElement last;  // the one that counts
    for (const CheckElement& layout : layouts) {
      last = CheckWords::contains(LOGComponentFactory::classes("layout"), layout.className())
                 ? layout
                 : last;
    }
    for (const CheckElement& layout : layouts) {
      if (!checkClass(layout, "the appender has no layout by this element")) {
        continue;
      }
      CheckRules::checkParams(layout, m_findings);
      if (!isNeeded) {
        warn("layout-without-effect", layout, "", "a layout has no effect in {}",
             className == ASYNC ? "the layout in the appenders that it refers to" : "leave it out",
             {className});
      } else if (layout != last) {
        warn("duplicate-layout", layout, "",
             "there is a layout after this one; the last one counts", "one <layout>");
      } else {
        checkLineEnd(layout, className == SYSLOG);
      }
    }
  }

  void checkLineEnd(const CheckElement& layout, bool isForSyslog) {
    const CheckElement param = layout.className() == "LOGPatternLayout"
                                   ? layout.param("ConversionPattern", true)
                                   : CheckElement();
    const CheckPattern pattern(param.get("value"));
    if (param.isNull() && isForSyslog) {
      warn("syslog-line-end", layout, "",
           "a datagram is one message, and this layout ends each with a line end",
           "class=\"LOGPatternLayout\" with a pattern without %n at its end");
    } else if (isForSyslog && pattern.endsWithLineEnd()) {
      warn("syslog-line-end", param, "value",
           "a datagram is one message: the line end of the pattern becomes a part of it",
           "the pattern without %n at its end");
    } else if (!param.isNull() && !isForSyslog && !pattern.hasLineEnd()) {
      warn("no-line-end", param, "value", "the pattern has no line end: all events become one line",
           "%n at its end");
    }
  }

  void checkErrorHandler(const CheckElement& handler) {
    checkClass(handler, "it becomes a handler that does nothing");
    warn("error-handler", handler, "",
         "the appenders of the library report failures in the diagnostics and never call an error "
         "handler",
         "leave it out");
    for (const CheckElement& param : handler.children("param")) {
      CheckRules::warnOfIgnored(param, handler.className(), m_findings);
    }
  }
};

}  // namespace

void CheckRules::checkComponents(CheckFindings& findings) {
  for (const CheckElement& appender : findings.document().elements("appender")) {
    ComponentRules(findings).checkAppender(appender);
  }
}
