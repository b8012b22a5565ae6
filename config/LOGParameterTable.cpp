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

template <typename Component>
Component& as(LOGObject& object) {
  return static_cast<Component&>(object);
}

/// Everything but "false" means yes.
int unlessFalse(const I18NString& value) {
  return I18NLocale::equalIgnoreCase(value, "false") ? 0 : 1;
}

template <void (LOGLevelRangeFilter::*SET)(LOGLevel*)>
void setLevel(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<LOGLevelRangeFilter>(object).*SET)(LOGLevel::toLevel(value));
}

void setLevelToMatch(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGLevelMatchFilter>(object).setLevelToMatch(value);
}

void setStringToMatch(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGStringMatchFilter>(object).setStringToMatch(value);
}

void setAppend(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGFileAppender>(object).setAppend(unlessFalse(value));
}

void setFile(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGFileAppender>(object).setFile(value);
}

void setRollingFile(LOGObject& object, const I18NString& value, const FileNameResolver& resolve) {
  auto& appender = as<LOGRollingFileAppender>(object);
  appender.setFile(appender.getAddProcID() == 1 ? resolve(value) : value);
}

void setMaxBackupIndex(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGRollingFileAppender>(object).setMaxBackupIndex(ZEBUtConvert::toInt(value));
}

void setMaximumFileSize(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  // A signed number widened to an unsigned one, and no suffix: "10MB" means 10 bytes, on purpose.
  as<LOGRollingFileAppender>(object).setMaximumFileSize(
      static_cast<std::uint64_t>(std::int64_t{ZEBUtConvert::toInt(value)}));
}

void setSyslogHost(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGSyslogAppender>(object).setSyslogHost(value);
}

void setFacility(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGSyslogAppender>(object).setFacility(value);
}

void setRemoteHost(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGTCPSocketAppender>(object).setRemoteHost(value);
}

template <typename Component, void (Component::*SET)(int)>
void setInt(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<Component>(object).*SET)(ZEBUtConvert::toInt(value));
}

template <void (LOGTCPSocketAppender::*SET)(int)>
void setTCPSwitch(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<LOGTCPSocketAppender>(object).*SET)(unlessFalse(value));
}

void setDateFormat(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGTTCCLayout>(object).setDateFormat(value);
}

void setConversionPattern(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  as<LOGPatternLayout>(object).setConversionPattern(value);
}

constexpr Row ROWS[] = {
    {"LOGLevelRangeFilter", "LevelMax", NameCase::Exact,
     setLevel<&LOGLevelRangeFilter::setLevelMax>},
    {"LOGLevelRangeFilter", "LevelMin", NameCase::Exact,
     setLevel<&LOGLevelRangeFilter::setLevelMin>},
    {"LOGLevelMatchFilter", "LevelToMatch", NameCase::Exact, setLevelToMatch},
    {"LOGStringMatchFilter", "StringToMatch", NameCase::Exact, setStringToMatch},
    {"LOGFileAppender", "Append", NameCase::Exact, setAppend},
    {"LOGFileAppender", "File", NameCase::Exact, setFile},
    {"LOGRollingFileAppender", "Append", NameCase::Exact, setAppend},
    {"LOGRollingFileAppender", "File", NameCase::Exact, setRollingFile},
    {"LOGRollingFileAppender", "MaxBackupIndex", NameCase::Exact, setMaxBackupIndex},
    {"LOGRollingFileAppender", "MaximumFileSize", NameCase::Exact, setMaximumFileSize},
    {"LOGSyslogAppender", "Host", NameCase::Exact, setSyslogHost},
    {"LOGSyslogAppender", "Facility", NameCase::Exact, setFacility},
    {"LOGLocalUDPAppender", "Port", NameCase::Exact,
     setInt<LOGLocalUDPAppender, &LOGLocalUDPAppender::setPort>},
    {"LOGTCPSocketAppender", "RemoteHost", NameCase::Any, setRemoteHost},
    {"LOGTCPSocketAppender", "Port", NameCase::Any,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setPort>},
    {"LOGTCPSocketAppender", "LocationInfo", NameCase::Any,
     setTCPSwitch<&LOGTCPSocketAppender::setLocationInfo>},
    {"LOGTCPSocketAppender", "Secure", NameCase::Any,
     setTCPSwitch<&LOGTCPSocketAppender::setSecure>},
    {"LOGTCPSocketAppender", "ReconnectionDelay", NameCase::Any,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setReconnectionDelay>},
    {"LOGTTCCLayout", "DateFormat", NameCase::Any, setDateFormat},
    {"LOGPatternLayout", "ConversionPattern", NameCase::Any, setConversionPattern},
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
