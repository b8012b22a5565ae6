#include "config/LOGParameterTable.h"

#include <algorithm>

#include "appenders/LOGFileAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGLevel.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGTTCCLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "net/LOGTCPSocketAppender.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBUtConvert.h"

namespace {

using FileNameResolver = LOGParameterTable::FileNameResolver;
using Setter = void (*)(LOGObject& object, const I18NString& value, const FileNameResolver&);

enum class NameCase { Exact, Any };

struct Row {
  const char* className;
  const char* name;
  NameCase nameCase;
  Setter set;
};

/// Everything but "false" means yes.
int unlessFalse(const I18NString& value) {
  return I18NLocale::equalIgnoreCase(value, "false") ? 0 : 1;
}

// Each calls one setter of a component with the value as what the setter takes.

template <typename Component, void (Component::*SET)(const I18NString&)>
void setText(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (static_cast<Component&>(object).*SET)(value);
}

template <typename Component, void (Component::*SET)(int)>
void setInt(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (static_cast<Component&>(object).*SET)(ZEBUtConvert::toInt(value));
}

template <typename Component, void (Component::*SET)(int)>
void setSwitch(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (static_cast<Component&>(object).*SET)(unlessFalse(value));
}

template <void (LOGLevelRangeFilter::*SET)(LOGLevel*)>
void setLevel(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (static_cast<LOGLevelRangeFilter&>(object).*SET)(LOGLevel::toLevel(value));
}

void setRollingFile(LOGObject& object, const I18NString& value, const FileNameResolver& resolve) {
  auto& appender = static_cast<LOGRollingFileAppender&>(object);
  appender.setFile(appender.getAddProcID() == 1 ? resolve(value) : value);
}

void setMaximumFileSize(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  // Deliberate: a signed number widened to an unsigned one, and no suffix: "10MB" means 10 bytes.
  static_cast<LOGRollingFileAppender&>(object).setMaximumFileSize(
      static_cast<std::uint64_t>(std::int64_t{ZEBUtConvert::toInt(value)}));
}

constexpr Row ROWS[] = {
    {"LOGLevelRangeFilter", "LevelMax", NameCase::Exact,
     setLevel<&LOGLevelRangeFilter::setLevelMax>},
    {"LOGLevelRangeFilter", "LevelMin", NameCase::Exact,
     setLevel<&LOGLevelRangeFilter::setLevelMin>},
    {"LOGLevelMatchFilter", "LevelToMatch", NameCase::Exact,
     setText<LOGLevelMatchFilter, &LOGLevelMatchFilter::setLevelToMatch>},
    {"LOGStringMatchFilter", "StringToMatch", NameCase::Exact,
     setText<LOGStringMatchFilter, &LOGStringMatchFilter::setStringToMatch>},
    {"LOGFileAppender", "Append", NameCase::Exact,
     setSwitch<LOGFileAppender, &LOGFileAppender::setAppend>},
    {"LOGFileAppender", "File", NameCase::Exact,
     setText<LOGFileAppender, &LOGFileAppender::setFile>},
    {"LOGRollingFileAppender", "Append", NameCase::Exact,
     setSwitch<LOGFileAppender, &LOGFileAppender::setAppend>},
    {"LOGRollingFileAppender", "File", NameCase::Exact, setRollingFile},
    {"LOGRollingFileAppender", "MaxBackupIndex", NameCase::Exact,
     setInt<LOGRollingFileAppender, &LOGRollingFileAppender::setMaxBackupIndex>},
    {"LOGRollingFileAppender", "MaximumFileSize", NameCase::Exact, setMaximumFileSize},
    {"LOGSyslogAppender", "Host", NameCase::Exact,
     setText<LOGSyslogAppender, &LOGSyslogAppender::setSyslogHost>},
    {"LOGSyslogAppender", "Facility", NameCase::Exact,
     setText<LOGSyslogAppender, &LOGSyslogAppender::setFacility>},
    {"LOGLocalUDPAppender", "Port", NameCase::Exact,
     setInt<LOGLocalUDPAppender, &LOGLocalUDPAppender::setPort>},
    {"LOGTCPSocketAppender", "RemoteHost", NameCase::Any,
     setText<LOGTCPSocketAppender, &LOGTCPSocketAppender::setRemoteHost>},
    {"LOGTCPSocketAppender", "Port", NameCase::Any,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setPort>},
    {"LOGTCPSocketAppender", "LocationInfo", NameCase::Any,
     setSwitch<LOGTCPSocketAppender, &LOGTCPSocketAppender::setLocationInfo>},
    {"LOGTCPSocketAppender", "Secure", NameCase::Any,
     setSwitch<LOGTCPSocketAppender, &LOGTCPSocketAppender::setSecure>},
    {"LOGTCPSocketAppender", "ReconnectionDelay", NameCase::Any,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setReconnectionDelay>},
    {"LOGTTCCLayout", "DateFormat", NameCase::Any,
     setText<LOGDateLayout, &LOGDateLayout::setDateFormat>},
    {"LOGPatternLayout", "ConversionPattern", NameCase::Any,
     setText<LOGPatternLayout, &LOGPatternLayout::setConversionPattern>},
};

bool matches(const Row& row, const I18NString& className, const I18NString& name) {
  return className == row.className &&
         (row.nameCase == NameCase::Any ? I18NLocale::equalIgnoreCase(name, row.name)
                                        : name == row.name);
}

}  // namespace

void LOGParameterTable::apply(LOGObject& object, const I18NString& name, const I18NString& value,
                              const FileNameResolver& resolveFileName) {
  if (value.isEmpty()) {
    return;
  }
  const auto row = std::find_if(std::begin(ROWS), std::end(ROWS), [&](const Row& candidate) {
    return matches(candidate, object.instanceOf(), name);
  });
  if (row != std::end(ROWS)) {
    row->set(object, value, resolveFileName);
  }
}

std::vector<LOGParameterTable::Param> LOGParameterTable::paramsOf(const std::string& className) {
  std::vector<Param> params;
  for (const Row& row : ROWS) {
    if (className == row.className) {
      params.push_back({row.name, row.nameCase == NameCase::Any});
    }
  }
  return params;
}
