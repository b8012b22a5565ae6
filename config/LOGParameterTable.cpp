#include "config/LOGParameterTable.h"

#include <type_traits>

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
using Setter = void (*)(LOGObject& object, const I18NString& value, Kind kind,
                        const FileNameResolver& resolve);

struct Row {
  const char* className;
  const char* name;
  Kind kind;
  Setter set;
};

/// Everything but "false" means yes.
int unlessFalse(const I18NString& value) {
  return I18NLocale::equalIgnoreCase(value, "false") ? 0 : 1;
}

/// Calls the setter of a component with the value as what it takes.
template <typename Component, typename Argument>
void call(void (Component::*set)(Argument), LOGObject& object, const I18NString& value, Kind kind) {
  auto& component = static_cast<Component&>(object);
  if constexpr (std::is_same_v<Argument, int>) {
    (component.*set)(kind == Kind::Switch ? unlessFalse(value) : ZEBUtConvert::toInt(value));
  } else if constexpr (std::is_same_v<Argument, std::uint64_t>) {
    // Deliberate: no suffix is known, so that "10MB" means 10 bytes, and a negative number is huge.
    (component.*set)(static_cast<std::uint64_t>(std::int64_t{ZEBUtConvert::toInt(value)}));
  } else if constexpr (std::is_same_v<Argument, LOGLevel*>) {
    (component.*set)(LOGLevel::toLevel(value));
  } else {
    (component.*set)(value);
  }
}

template <auto SET>
void set(LOGObject& object, const I18NString& value, Kind kind, const FileNameResolver&) {
  call(SET, object, value, kind);
}

void setRollingFile(LOGObject& object, const I18NString& value, Kind,
                    const FileNameResolver& resolve) {
  auto& appender = static_cast<LOGRollingFileAppender&>(object);
  appender.setFile(appender.getAddProcID() == 1 ? resolve(value) : value);
}

// Those with other forms beside the one for a param.
constexpr void (LOGFileAppender::*SET_FILE)(const I18NString&) = &LOGFileAppender::setFile;
constexpr void (LOGDateLayout::*SET_DATE_FORMAT)(const I18NString&) = &LOGDateLayout::setDateFormat;

constexpr Row ROWS[] = {
    {"LOGLevelRangeFilter", "LevelMax", Kind::Level, set<&LOGLevelRangeFilter::setLevelMax>},
    {"LOGLevelRangeFilter", "LevelMin", Kind::Level, set<&LOGLevelRangeFilter::setLevelMin>},
    {"LOGLevelMatchFilter", "LevelToMatch", Kind::LevelOrNone,
     set<&LOGLevelMatchFilter::setLevelToMatch>},
    {"LOGStringMatchFilter", "StringToMatch", Kind::Text,
     set<&LOGStringMatchFilter::setStringToMatch>},
    {"LOGFileAppender", "Append", Kind::Switch, set<&LOGFileAppender::setAppend>},
    {"LOGFileAppender", "File", Kind::Text, set<SET_FILE>},
    {"LOGRollingFileAppender", "Append", Kind::Switch, set<&LOGFileAppender::setAppend>},
    {"LOGRollingFileAppender", "File", Kind::Text, setRollingFile},
    {"LOGRollingFileAppender", "MaxBackupIndex", Kind::Backups,
     set<&LOGRollingFileAppender::setMaxBackupIndex>},
    {"LOGRollingFileAppender", "MaximumFileSize", Kind::Bytes,
     set<&LOGRollingFileAppender::setMaximumFileSize>},
    {"LOGSyslogAppender", "Host", Kind::Host, set<&LOGSyslogAppender::setSyslogHost>},
    {"LOGSyslogAppender", "Facility", Kind::Facility, set<&LOGSyslogAppender::setFacility>},
    {"LOGLocalUDPAppender", "Port", Kind::Port, set<&LOGLocalUDPAppender::setPort>},
    {"LOGTCPSocketAppender", "RemoteHost", Kind::Text, set<&LOGTCPSocketAppender::setRemoteHost>},
    {"LOGTCPSocketAppender", "Port", Kind::Port, set<&LOGTCPSocketAppender::setPort>},
    {"LOGTCPSocketAppender", "LocationInfo", Kind::Switch,
     set<&LOGTCPSocketAppender::setLocationInfo>},
    {"LOGTCPSocketAppender", "Secure", Kind::Switch, set<&LOGTCPSocketAppender::setSecure>},
    {"LOGTCPSocketAppender", "ReconnectionDelay", Kind::Number,
     set<&LOGTCPSocketAppender::setReconnectionDelay>},
    {"LOGTTCCLayout", "DateFormat", Kind::DateFormat, set<SET_DATE_FORMAT>},
    {"LOGPatternLayout", "ConversionPattern", Kind::Pattern,
     set<&LOGPatternLayout::setConversionPattern>},
};

bool takesNamesInAnyCase(const I18NString& className) {
  return className == "LOGTCPSocketAppender" || className == "LOGTTCCLayout" ||
         className == "LOGPatternLayout";
}

}  // namespace

void LOGParameterTable::apply(LOGObject& object, const I18NString& name, const I18NString& value,
                              const FileNameResolver& resolveFileName) {
  if (value.isEmpty()) {
    return;
  }
  const I18NString className = object.instanceOf();
  const bool inAnyCase = takesNamesInAnyCase(className);
  for (const Row& row : ROWS) {
    if (className == row.className &&
        (inAnyCase ? I18NLocale::equalIgnoreCase(name, row.name) : name == row.name)) {
      row.set(object, value, row.kind, resolveFileName);
    }
  }
}

std::vector<LOGParameterTable::Param> LOGParameterTable::paramsOf(const std::string& className) {
  std::vector<Param> params;
  for (const Row& row : ROWS) {
    if (className == row.className) {
      params.push_back({row.name, takesNamesInAnyCase(className), row.kind});
    }
  }
  return params;
}
