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

template <typename Base>
struct Entry {
  const char* className;
  std::unique_ptr<Base> (*make)();
};

template <typename Base, typename Component>
std::unique_ptr<Base> make() {
  return std::make_unique<Component>();
}

constexpr Entry<LOGAppenderSkeleton> APPENDERS[] = {
    {"LOGAsyncAppender", make<LOGAppenderSkeleton, LOGAsyncAppender>},
    {"LOGConsoleAppender", make<LOGAppenderSkeleton, LOGConsoleAppender>},
    {"LOGFileAppender", make<LOGAppenderSkeleton, LOGFileAppender>},
    {"LOGRollingFileAppender", make<LOGAppenderSkeleton, LOGRollingFileAppender>},
    {"LOGSyslogAppender", make<LOGAppenderSkeleton, LOGSyslogAppender>},
    {"LOGTCPSocketAppender", make<LOGAppenderSkeleton, LOGTCPSocketAppender>},
    {"LOGLocalUDPAppender", make<LOGAppenderSkeleton, LOGLocalUDPAppender>},
};

constexpr Entry<LOGLayout> LAYOUTS[] = {
    // There is no class of this name: the base of all layouts is the simple one.
    {"LOGSimpleLayout", make<LOGLayout, LOGLayout>},
    {"LOGTTCCLayout", make<LOGLayout, LOGTTCCLayout>},
    {"LOGPatternLayout", make<LOGLayout, LOGPatternLayout>},
    {"LOGXMLLayout", make<LOGLayout, LOGXMLLayout>},
    {"LOGHTMLLayout", make<LOGLayout, LOGHTMLLayout>},
};

constexpr Entry<LOGFilter> FILTERS[] = {
    {"LOGLevelRangeFilter", make<LOGFilter, LOGLevelRangeFilter>},
    {"LOGLevelMatchFilter", make<LOGFilter, LOGLevelMatchFilter>},
    {"LOGStringMatchFilter", make<LOGFilter, LOGStringMatchFilter>},
};

constexpr Entry<LOGErrorHandler> ERROR_HANDLERS[] = {
    {"LOGOnlyOnceErrorHandler", make<LOGErrorHandler, LOGOnlyOnceErrorHandler>},
};

template <typename Base, std::size_t COUNT>
std::unique_ptr<Base> find(const Entry<Base> (&entries)[COUNT], const I18NString& className) {
  for (const Entry<Base>& entry : entries) {
    if (className == entry.className) {
      return entry.make();
    }
  }
  return nullptr;
}

template <typename Base, std::size_t COUNT>
std::vector<std::string> namesIn(const Entry<Base> (&entries)[COUNT]) {
  std::vector<std::string> names;
  for (const Entry<Base>& entry : entries) {
    names.emplace_back(entry.className);
  }
  return names;
}

}  // namespace

std::unique_ptr<LOGAppenderSkeleton> LOGComponentFactory::newAppender(const I18NString& className) {
  return find(APPENDERS, className);
}

std::unique_ptr<LOGLayout> LOGComponentFactory::newLayout(const I18NString& className) {
  return find(LAYOUTS, className);
}

std::unique_ptr<LOGFilter> LOGComponentFactory::newFilter(const I18NString& className) {
  return find(FILTERS, className);
}

std::unique_ptr<LOGErrorHandler> LOGComponentFactory::newErrorHandler(const I18NString& className) {
  return find(ERROR_HANDLERS, className);
}

std::vector<std::string> LOGComponentFactory::appenderClasses() { return namesIn(APPENDERS); }

std::vector<std::string> LOGComponentFactory::layoutClasses() { return namesIn(LAYOUTS); }

std::vector<std::string> LOGComponentFactory::filterClasses() { return namesIn(FILTERS); }

std::vector<std::string> LOGComponentFactory::errorHandlerClasses() {
  return namesIn(ERROR_HANDLERS);
}
