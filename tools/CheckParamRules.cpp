#include "tools/CheckParamRules.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "config/LOGComponentFactory.h"
#include "config/LOGParameterTable.h"
#include "net/LOGSyslogAppender.h"
#include "tools/CheckPattern.h"
#include "tools/CheckWords.h"

namespace {

using Words = std::vector<std::string>;

/// Options that the classes have and that a document does not set, or under another name.
struct Advice {
  const char* kind;  // the element that the param stands in
  const char* of;    // a part of the names of the classes that it is for
  const char* name;
  const char* instead;
};
constexpr const char* BUFFERED =
    "setBufferedIO(1) in the program, which loses what is in the buffer when it is killed; from a "
    "document every event is written at once";
constexpr const char* RECORDS_STAY_HERE =
    "nothing: records go to this machine; LOGSyslogAppender sends to others";
constexpr Advice ADVICE[] = {
    {"appender", "", "threshold",
     "<filter class=\"LOGLevelRangeFilter\"> with LevelMin; a threshold that a program sets is an "
     "upper bound"},
    {"appender", "Console", "target",
     "setTarget(\"err\") in the program; a document means standard output"},
    {"appender", "FileAppender", "bufferedio", BUFFERED},
    {"appender", "Async", "buffersize",
     "setBufferSize in the program; from a document a queue holds 128"},
    {"appender", "FileAppender", "buffersize", BUFFERED},
    {"appender", "", "immediateflush", "nothing: from a document every event is written at once"},
    {"appender", "", "encoding", "nothing: everything is written in UTF-8"},
    {"appender", "Rolling", "maxfilesize", "name=\"MaximumFileSize\", in bytes"},
    {"appender", "FileAppender", "filename", "name=\"File\""},
    {"appender", "", "maxfilesize",
     "class=\"LOGRollingFileAppender\", with MaximumFileSize in bytes"},
    {"appender", "LocalUDP", "host", RECORDS_STAY_HERE},
    {"appender", "LocalUDP", "remotehost", RECORDS_STAY_HERE},
    {"appender", "Syslog", "sysloghost", "name=\"Host\""},
    {"appender", "Syslog", "remotehost", "name=\"Host\""},
    {"appender", "Syslog", "port", "nothing: syslog datagrams go to port 514"},
    {"appender", "Syslog", "facilityprinting", "setFacilityPrinting(1) in the program"},
    {"layout", "", "title", "log4zeb page --title"},
    {"layout", "", "locationinfo", "nothing: locations are not recorded"},
    {"layout", "", "timezone", "nothing: dates are in the local time of the process"},
    {"layout", "Pattern", "pattern", "name=\"ConversionPattern\""},
    {"layout", "", "pattern", "class=\"LOGPatternLayout\", with ConversionPattern"},
    {"layout", "", "threadprinting", "class=\"LOGPatternLayout\" with %t where it is wanted"},
    {"layout", "", "contextprinting", "class=\"LOGPatternLayout\" with %x where it is wanted"},
    {"filter", "", "acceptonmatch",
     "nothing to accept what matches; a document cannot make a filter deny what matches"},
};

/// Words that are taken for specifiers, of which the library reads the first letter.
constexpr struct {
  const char* word;
  const char* instead;
} WORDS[] = {{"category", "%c"}, {"date", "%d"},     {"level", "%p"},
             {"logger", "%c"},   {"message", "%m"},  {"msg", "%m"},
             {"priority", "%p"}, {"relative", "%r"}, {"thread", "%t"}};

bool contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string assignment(const std::string& name, const std::string& value) {
  return name + "=" + CheckWords::quoted(value);
}

bool isTwelveHourFormat(const std::string& text) {
  return text == "HH:mm:ss,SSS" || text == "dd MMM yyyy HH:mm:ss,SSS";
}

bool isDateFormat(const std::string& text, bool isInPattern) {
  const bool isPattern = isTwelveHourFormat(text);
  const Words exact{"ISO8601", "ABSOLUTE", "DATE"};
  if (isInPattern) {
    return isPattern || contains(exact, text);
  }
  const Words inAnyCase{"iso8601", "absolute", "date", "relative"};
  return isPattern || text == "NULL" || contains(inAnyCase, CheckWords::lower(text));
}

/// The two patterns of dates lead to names, which show all that the patterns seem to.
std::string probableDateFormat(const std::string& text) {
  const std::string meant = CheckWords::nearest(text, {"ISO8601", "ABSOLUTE", "DATE",
                                                       "HH:mm:ss,SSS", "dd MMM yyyy HH:mm:ss,SSS"})
                                .value_or("ISO8601");
  return meant.front() == 'H' ? "ABSOLUTE" : meant.front() == 'd' ? "DATE" : meant;
}

std::string twelveHours(const std::string& text) {
  return CheckWords::quoted(text) +
         " is written with the hours of half a day, 1 to 12, and without milliseconds";
}

/// Whether a host is followed by a port: one colon, with digits behind it.
bool hasPort(const std::string& host) {
  const std::size_t colon = host.find(':');
  return colon != std::string::npos && colon + 1 < host.size() &&
         host.find_first_not_of("0123456789", colon + 1) == std::string::npos;
}

/// Where a param of that name would be read, if it is in the wrong place; empty if nowhere.
std::string placeOfParam(const std::string& given, const std::string& kind) {
  const std::pair<const char*, Words> kinds[] = {
      {"appender", LOGComponentFactory::appenderClasses()},
      {"layout", LOGComponentFactory::layoutClasses()},
      {"filter", LOGComponentFactory::filterClasses()}};
  for (const auto& [owner, classes] : kinds) {
    for (const std::string& className : classes) {
      for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
        if (className == "LOGTCPSocketAppender" || kind == "errorHandler" ||
            CheckWords::lower(known.name) != CheckWords::lower(CheckWords::trimmed(given))) {
          continue;  // that appender sends nothing, and a handler is not to be configured
        }
        return kind == owner ? assignment("class", className) + ", which reads it"
               : std::string("appender") == owner ? "the param in the <appender> itself"
                                                  : "the param in <" + std::string(owner) + " " +
                                                        assignment("class", className) + ">";
      }
    }
  }
  return "";
}

}  // namespace

void CheckParamRules::checkParams(const ZEBIDOM_Element& component) {
  std::map<std::string, int> lines;
  for (const ZEBIDOM_Element& param : CheckedDocument::children(component, "param")) {
    if (!checkParam(param, CheckedDocument::classOf(component))) {
      continue;
    }
    const std::string name = CheckWords::lower(CheckedDocument::attribute(param, "name"));
    const auto [known, isNew] = lines.insert({name, param.getLine()});
    if (!isNew) {
      m_findings.warn("duplicate-param", param, "name",
                      "the param is set in line " + std::to_string(known->second) +
                          " already; the last value counts",
                      "one <param>");
    }
  }
}

/// Returns whether the component takes the param.
bool CheckParamRules::checkParam(const ZEBIDOM_Element& param, const std::string& className) {
  const std::string given = CheckedDocument::attribute(param, "name");
  for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
    const bool isIt = known.isInAnyCase ? CheckWords::lower(given) == CheckWords::lower(known.name)
                                        : given == known.name;
    if (isIt && CheckedDocument::attribute(param, "value").empty()) {
      m_findings.warn("empty-param", param, "",
                      "the param " + CheckWords::quoted(given) + " is ignored: its value is empty",
                      "value=\"...\", or no such param");
      return false;
    }
    if (isIt) {
      checkValue(param, className, known.name);
      return true;
    }
  }
  warnOfIgnored(param, className);
  return false;
}

void CheckParamRules::warnOfIgnored(const ZEBIDOM_Element& param, const std::string& className) {
  const std::string given = CheckedDocument::attribute(param, "name");
  const std::string kind = CheckedDocument::tag(ZEBIDOM_Element(param.getParentNode()));
  Words names;
  for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
    names.push_back(known.name);
  }
  std::string text = "the param " + CheckWords::quoted(given) + " is ignored: " + className +
                     " reads none of that name";
  std::string instead = names.empty() ? "leave it out" : CheckWords::oneOf(names);
  const auto meant = CheckWords::nearest(given, names);
  const auto advice =
      std::find_if(std::begin(ADVICE), std::end(ADVICE), [&](const Advice& candidate) {
        return kind == candidate.kind && className.find(candidate.of) != std::string::npos &&
               CheckWords::lower(given) == candidate.name;
      });
  if (meant && CheckWords::lower(*meant) == CheckWords::lower(CheckWords::trimmed(given))) {
    text = "the param " + CheckWords::quoted(given) + " is ignored: " + className + " reads " +
           CheckWords::quoted(*meant) + ", and case and blanks count";
    instead = assignment("name", *meant);
  } else if (advice != std::end(ADVICE)) {
    instead = advice->instead;
  } else if (const std::string place = placeOfParam(given, kind); !place.empty()) {
    instead = place;
  } else if (meant) {
    instead = assignment("name", *meant);
  }
  m_findings.warn("ignored-param", param, "name", text, instead);
}

void CheckParamRules::checkValue(const ZEBIDOM_Element& param, const std::string& className,
                                 const std::string& name) {
  const std::string value = CheckedDocument::attribute(param, "value");
  if (name == "MaximumFileSize") {
    checkFileSize(param);
  } else if (name == "MaxBackupIndex" || name == "Port" || name == "ReconnectionDelay") {
    checkNumber(param, name);
  } else if (name == "Append" || name == "LocationInfo" || name == "Secure") {
    if (!CheckWords::isTruthValue(value)) {
      m_findings.warn("truth-value", param, "value",
                      CheckWords::quoted(value) + " means true: everything does but \"false\"",
                      "value=\"true\" or value=\"false\"");
    }
  } else if (name == "Facility" && LOGSyslogAppender::getFacility(value) < 0) {
    Words names;
    for (int code = 0; code <= 184; code += 8) {
      const std::string facility = LOGSyslogAppender::getFacilityString(code).toStdString();
      if (!facility.empty()) {
        names.push_back(facility);
      }
    }
    m_findings.warn("unknown-facility", param, "value",
                    "there is no facility " + CheckWords::quoted(value) + ": it means user",
                    assignment("value", CheckWords::nearest(value, names).value_or("user")));
  } else if (name == "LevelMin" || name == "LevelMax" || name == "LevelToMatch") {
    checkLevelValue(param, className, name);
  } else if (name == "DateFormat" && !isDateFormat(value, false)) {
    m_findings.warn("unknown-date-format", param, "value",
                    CheckWords::quoted(value) + " is no date format: no date is written",
                    assignment("value", probableDateFormat(value)));
  } else if (name == "DateFormat" && isTwelveHourFormat(value)) {
    m_findings.warn("twelve-hours", param, "value", twelveHours(value),
                    assignment("value", probableDateFormat(value)));
  } else if (name == "Host" && hasPort(value)) {
    m_findings.warn("port", param, "value",
                    CheckWords::quoted(value) +
                        " is looked up as the name of a host: syslog datagrams go to port 514",
                    assignment("value", value.substr(0, value.find(':'))));
  } else if (name == "ConversionPattern") {
    checkPattern(param);
  }
}

void CheckParamRules::checkNumber(const ZEBIDOM_Element& param, const std::string& name) {
  constexpr int LARGEST_PORT = 65535;
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckWords::Number number = CheckWords::number(value);
  if (!number.isWhole) {
    m_findings.warn(
        "number", param, "value",
        CheckWords::quoted(value) + " is read as the number " + std::to_string(number.value),
        assignment("value", std::to_string(std::max(number.value, 1))));
  } else if (name == "Port" && (number.value < 1 || number.value > LARGEST_PORT)) {
    m_findings.warn("port", param, "value", "there is no port " + value,
                    "a number from 1 to 65535");
  } else if (name == "MaxBackupIndex" && number.value < 1) {
    m_findings.warn("no-backup", param, "value",
                    "without a backup a full file is emptied, and all that was in it is lost",
                    "value=\"1\" or more");
  }
}

void CheckParamRules::checkFileSize(const ZEBIDOM_Element& param) {
  constexpr long long MOST = std::numeric_limits<int>::max();
  constexpr int LEAST_THAT_MAKES_SENSE = 1024;
  static const std::map<std::string, long long> UNITS{
      {"", 1},          {"b", 1},          {"bytes", 1},
      {"k", 1LL << 10}, {"kb", 1LL << 10}, {"kib", 1LL << 10},
      {"m", 1LL << 20}, {"mb", 1LL << 20}, {"mib", 1LL << 20},
      {"g", 1LL << 30}, {"gb", 1LL << 30}, {"gib", 1LL << 30}};
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckWords::Number number = CheckWords::number(value);
  const std::string bytes = std::to_string(number.value);
  if (!number.isWhole) {
    const auto unit = UNITS.find(CheckWords::lower(number.rest));
    const bool hasUnit = unit != UNITS.end() && number.value > 0;
    m_findings.warn(
        "file-size", param, "value",
        CheckWords::quoted(value) + " means " + bytes +
            " bytes: a size is a number of bytes up to 2147483647, without a unit",
        hasUnit ? assignment("value", std::to_string(std::min(MOST, number.value * unit->second)))
                : "value=\"10485760\", or another number of bytes");
  } else if (number.value < 0) {
    m_findings.warn("file-size", param, "value",
                    "a size below 0 is never reached: the file grows on and on",
                    "value=\"10485760\", or another number of bytes");
  } else if (number.value < LEAST_THAT_MAKES_SENSE) {
    m_findings.warn("file-size", param, "value",
                    "the file becomes a backup whenever it has " + bytes +
                        " bytes, which is after every event or a few",
                    "value=\"10485760\", or another number of bytes");
  }
}

void CheckParamRules::checkLevelValue(const ZEBIDOM_Element& param, const std::string& className,
                                      const std::string& name) {
  std::string value = CheckedDocument::attribute(param, "value");
  const std::string instead =
      assignment("value", CheckWords::probableLevel(value).value_or("INFO"));
  if (className == "LOGLevelMatchFilter") {
    const std::size_t mark = value.rfind('#');
    const bool isLevelOfClass = mark != std::string::npos && value.substr(mark + 1) == "LOGLevel";
    if (!CheckWords::isLevel(value) && !isLevelOfClass) {
      m_findings.warn("unknown-level", param, "value",
                      CheckWords::quoted(value) + " is no level: the filter matches nothing",
                      instead);
    }
  } else if (!CheckWords::isLevel(value)) {
    m_findings.warn("unknown-level", param, "value",
                    CheckWords::quoted(value) + " is no level: " + name + " becomes DEBUG",
                    instead);
  }
}

void CheckParamRules::checkPattern(const ZEBIDOM_Element& param) {
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckPattern pattern(value);
  for (const std::string& text : pattern.unknown()) {
    m_findings.warn("unknown-specifier", param, "value",
                    CheckWords::quoted(text) + " is no specifier: it is written as it stands",
                    "one of the letters c, d, m, n, p, r, t and x, or %% for a percent sign");
  }
  for (const std::string& text : pattern.unfinished()) {
    m_findings.warn(
        "unknown-specifier", param, "value",
        CheckWords::quoted(text) + " is the beginning of a specifier and is written as it stands",
        "a letter at its end, or %% for a percent sign");
  }
  const auto& specifiers = pattern.specifiers();
  if (pattern.unknown().empty() && pattern.unfinished().empty() &&
      std::none_of(specifiers.begin(), specifiers.end(),
                   [](const CheckPattern::Specifier& known) { return known.letter == 'm'; })) {
    m_findings.warn("no-message", param, "value",
                    "the pattern has no %m, so the messages are not written", "%m in it");
  }
  for (const char* const escape : {"\\n", "\\t", "\\r"}) {
    if (value.find(escape) != std::string::npos) {
      m_findings.warn("backslash", param, "value",
                      CheckWords::quoted(escape) + " is written as a backslash and a letter",
                      *(escape + 1) == 't' ? "&#9; for a tab" : "%n for a line end");
    }
  }
  checkPatternOptions(param);
}

void CheckParamRules::checkPatternOptions(const ZEBIDOM_Element& param) {
  const CheckPattern pattern(CheckedDocument::attribute(param, "value"));
  for (const CheckPattern::Specifier& specifier : pattern.specifiers()) {
    const std::string option = specifier.option.value_or("");
    const std::string text = CheckWords::quoted(specifier.text);
    const auto word = std::find_if(std::begin(WORDS), std::end(WORDS),
                                   [&](const auto& known) { return specifier.word == known.word; });
    if (word != std::end(WORDS)) {
      m_findings.warn("unknown-specifier", param, "value",
                      CheckWords::quoted(specifier.text + specifier.word.substr(1)) + " is " +
                          text + " and the text " + CheckWords::quoted(specifier.word.substr(1)) +
                          ": a specifier has one letter",
                      word->instead);
    } else if (specifier.letter == 'X' && !specifier.option) {
      m_findings.warn(
          "pattern-without-key", param, "value",
          text + " has no key: the layout is not made, and without another nothing is written",
          "%x, the nested context");
    } else if (specifier.hasUnreadOption) {
      m_findings.warn("unknown-specifier", param, "value",
                      "the brace behind " + text +
                          " is written as it stands: nothing is in the braces, or none closes",
                      specifier.text + ", or a text in braces behind it");
    } else if (specifier.letter == 'X') {
      m_findings.warn("nothing-to-show", param, "value",
                      text + " shows nothing: no mapped context is kept", "%x, the nested context");
    } else if (std::string("CFLMl").find(specifier.letter) != std::string::npos) {
      m_findings.warn("nothing-to-show", param, "value",
                      text + " shows " + (specifier.letter == 'l' ? "nothing" : "\"?\"") +
                          ": locations are not recorded",
                      "leave it out");
    } else if (specifier.letter == 'd' && specifier.option && !isDateFormat(option, true)) {
      m_findings.warn(
          "unknown-date-format", param, "value",
          CheckWords::quoted(option) + " is no date format of a pattern: no date is written",
          "%d{" + probableDateFormat(option) + "}");
    } else if (specifier.letter == 'd' && isTwelveHourFormat(option)) {
      m_findings.warn("twelve-hours", param, "value", twelveHours(option),
                      "%d{" + probableDateFormat(option) + "}");
    } else if (specifier.letter != 'c' || !specifier.option) {
      continue;
    } else if (CheckWords::number(option).value < 1) {
      m_findings.warn("precision", param, "value",
                      "the precision " + CheckWords::quoted(option) +
                          " is no positive number: the whole name is written",
                      "%c{1}, or %c");
    } else if (!CheckWords::number(option).isWhole) {
      const std::string number = std::to_string(CheckWords::number(option).value);
      m_findings.warn("precision", param, "value",
                      "the precision " + CheckWords::quoted(option) + " is read as " + number,
                      "%c{" + number + "}");
    }
  }
}
