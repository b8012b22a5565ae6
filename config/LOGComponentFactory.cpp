#include "config/LOGComponentFactory.h"

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGFileAppender.h"
#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "appenders/LOGRollingFileAppender.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGTTCCLayout.h"
#include "layouts/LOGXMLLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "net/LOGTCPSocketAppender.h"

namespace {

template <typename Component>
std::unique_ptr<LOGObject> makeNew() {
  return std::make_unique<Component>();
}

constexpr struct {
  const char* tag;
  const char* className;
  std::unique_ptr<LOGObject> (*make)();
} COMPONENTS[] = {
    {"appender", "LOGAsyncAppender", makeNew<LOGAsyncAppender>},
    {"appender", "LOGConsoleAppender", makeNew<LOGConsoleAppender>},
    {"appender", "LOGFileAppender", makeNew<LOGFileAppender>},
    {"appender", "LOGRollingFileAppender", makeNew<LOGRollingFileAppender>},
    {"appender", "LOGSyslogAppender", makeNew<LOGSyslogAppender>},
    {"appender", "LOGTCPSocketAppender", makeNew<LOGTCPSocketAppender>},
    {"appender", "LOGLocalUDPAppender", makeNew<LOGLocalUDPAppender>},
    // There is no class of this name: the base of all layouts is the simple one.
    {"layout", "LOGSimpleLayout", makeNew<LOGLayout>},
    {"layout", "LOGTTCCLayout", makeNew<LOGTTCCLayout>},
    {"layout", "LOGPatternLayout", makeNew<LOGPatternLayout>},
    {"layout", "LOGXMLLayout", makeNew<LOGXMLLayout>},
    {"layout", "LOGHTMLLayout", makeNew<LOGHTMLLayout>},
    {"filter", "LOGLevelRangeFilter", makeNew<LOGLevelRangeFilter>},
    {"filter", "LOGLevelMatchFilter", makeNew<LOGLevelMatchFilter>},
    {"filter", "LOGStringMatchFilter", makeNew<LOGStringMatchFilter>},
    {"errorHandler", "LOGOnlyOnceErrorHandler", makeNew<LOGOnlyOnceErrorHandler>},
};

}  // namespace

std::unique_ptr<LOGObject> LOGComponentFactory::make(const I18NString& tag,
                                                     const I18NString& className) {
  for (const auto& component : COMPONENTS) {
    if (tag == component.tag && className == component.className) {
      return component.make();
    }
  }
  return nullptr;
}

std::vector<std::string> LOGComponentFactory::classes(const I18NString& tag) {
  std::vector<std::string> names;
  for (const auto& component : COMPONENTS) {
    if (tag == component.tag) {
      names.emplace_back(component.className);
    }
  }
  return names;
}
