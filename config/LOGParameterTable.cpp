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

using Kind = LOGParameterTable::Kind;
using FileNameResolver = LOGParameterTable::FileNameResolver;
using Setter = void (*)(LOGObject& object, const I18NString& value, const FileNameResolver&);

enum class NameCase { Exact, Any };

struct Row {
  const char* className;
  const char* name;
  NameCase nameCase;
  Kind kind;
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

// Setters of classes as setters of params.
template <typename Component, void (Component::*SET)(const I18NString&)>
void setText(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<Component>(object).*SET)(value);
}

template <typename Component, void (Component::*SET)(int)>
void setInt(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<Component>(object).*SET)(ZEBUtConvert::toInt(value));
}

template <typename Component, void (Component::*SET)(int)>
void setSwitch(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<Component>(object).*SET)(unlessFalse(value));
}

template <void (LOGLevelRangeFilter::*SET)(LOGLevel*)>
void setLevel(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  (as<LOGLevelRangeFilter>(object).*SET)(LOGLevel::toLevel(value));
}

void setRollingFile(LOGObject& object, const I18NString& value, const FileNameResolver& resolve) {
  auto& appender = as<LOGRollingFileAppender>(object);
  appender.setFile(appender.getAddProcID() == 1 ? resolve(value) : value);
}

void setMaximumFileSize(LOGObject& object, const I18NString& value, const FileNameResolver&) {
  // Deliberate: no suffix is known, so that "10MB" means 10 bytes, and a negative number is huge.
  as<LOGRollingFileAppender>(object).setMaximumFileSize(
      static_cast<std::uint64_t>(std::int64_t{ZEBUtConvert::toInt(value)}));
}

constexpr Row ROWS[] = {
    {"LOGLevelRangeFilter", "LevelMax", NameCase::Exact, Kind::Level,
     setLevel<&LOGLevelRangeFilter::setLevelMax>},
    {"LOGLevelRangeFilter", "LevelMin", NameCase::Exact, Kind::Level,
     setLevel<&LOGLevelRangeFilter::setLevelMin>},
    {"LOGLevelMatchFilter", "LevelToMatch", NameCase::Exact, Kind::LevelOrNone,
     setText<LOGLevelMatchFilter, &LOGLevelMatchFilter::setLevelToMatch>},
    {"LOGStringMatchFilter", "StringToMatch", NameCase::Exact, Kind::Text,
     setText<LOGStringMatchFilter, &LOGStringMatchFilter::setStringToMatch>},
    {"LOGFileAppender", "Append", NameCase::Exact, Kind::Switch,
     setSwitch<LOGFileAppender, &LOGFileAppender::setAppend>},
    {"LOGFileAppender", "File", NameCase::Exact, Kind::Text,
     setText<LOGFileAppender, &LOGFileAppender::setFile>},
    {"LOGRollingFileAppender", "Append", NameCase::Exact, Kind::Switch,
     setSwitch<LOGFileAppender, &LOGFileAppender::setAppend>},
    {"LOGRollingFileAppender", "File", NameCase::Exact, Kind::Text, setRollingFile},
    {"LOGRollingFileAppender", "MaxBackupIndex", NameCase::Exact, Kind::Backups,
     setInt<LOGRollingFileAppender, &LOGRollingFileAppender::setMaxBackupIndex>},
    {"LOGRollingFileAppender", "MaximumFileSize", NameCase::Exact, Kind::Bytes, setMaximumFileSize},
    {"LOGSyslogAppender", "Host", NameCase::Exact, Kind::Host,
     setText<LOGSyslogAppender, &LOGSyslogAppender::setSyslogHost>},
    {"LOGSyslogAppender", "Facility", NameCase::Exact, Kind::Facility,
     setText<LOGSyslogAppender, &LOGSyslogAppender::setFacility>},
    {"LOGLocalUDPAppender", "Port", NameCase::Exact, Kind::Port,
     setInt<LOGLocalUDPAppender, &LOGLocalUDPAppender::setPort>},
    {"LOGTCPSocketAppender", "RemoteHost", NameCase::Any, Kind::Text,
     setText<LOGTCPSocketAppender, &LOGTCPSocketAppender::setRemoteHost>},
    {"LOGTCPSocketAppender", "Port", NameCase::Any, Kind::Port,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setPort>},
    {"LOGTCPSocketAppender", "LocationInfo", NameCase::Any, Kind::Switch,
     setSwitch<LOGTCPSocketAppender, &LOGTCPSocketAppender::setLocationInfo>},
    {"LOGTCPSocketAppender", "Secure", NameCase::Any, Kind::Switch,
     setSwitch<LOGTCPSocketAppender, &LOGTCPSocketAppender::setSecure>},
    {"LOGTCPSocketAppender", "ReconnectionDelay", NameCase::Any, Kind::Number,
     setInt<LOGTCPSocketAppender, &LOGTCPSocketAppender::setReconnectionDelay>},
    {"LOGTTCCLayout", "DateFormat", NameCase::Any, Kind::DateFormat,
     setText<LOGDateLayout, &LOGDateLayout::setDateFormat>},
    {"LOGPatternLayout", "ConversionPattern", NameCase::Any, Kind::Pattern,
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
      params.push_back({row.name, row.nameCase == NameCase::Any, row.kind});
    }
  }
  return params;
}
