#include <algorithm>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "config/LOGComponentFactory.h"
#include "config/LOGParameterTable.h"
#include "net/LOGSyslogAppender.h"
#include "tools/CheckPattern.h"
#include "tools/CheckRules.h"
#include "tools/CheckWords.h"

namespace {

using Kind = LOGParameterTable::Kind;
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

/// The two patterns of dates lead to names, which show all that the patterns seem to.
std::string probableDateFormat(const std::string& text) {
  const std::string meant = CheckWords::nearest(text, {"ISO8601", "ABSOLUTE", "DATE",
                                                       "HH:mm:ss,SSS", "dd MMM yyyy HH:mm:ss,SSS"})
                                .value_or("ISO8601");
  return meant.front() == 'H' ? "ABSOLUTE" : meant.front() == 'd' ? "DATE" : meant;
}

/// Whether a host is followed by a port: one colon, with digits behind it.
bool hasPort(const std::string& host) {
  const std::size_t colon = host.find(':');
  return colon != std::string::npos && colon + 1 < host.size() &&
         host.find_first_not_of("0123456789", colon + 1) == std::string::npos;
}

/// Where a param of that name would be read, if it is in the wrong place; empty if nowhere.
std::string placeOfParam(const std::string& given, const std::string& kind) {
  if (kind == "errorHandler") {
    return "";  // a handler is not to be configured
  }
  for (const std::string owner : {"appender", "layout", "filter"}) {
    for (const std::string& className : LOGComponentFactory::classes(owner)) {
      for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
        if (className == "LOGTCPSocketAppender" ||
            CheckWords::lower(known.name) != CheckWords::lower(CheckWords::trimmed(given))) {
          continue;  // that appender sends nothing
        }
        return kind == owner         ? "class=\"" + className + "\", which reads it"
               : owner == "appender" ? "the param in the <appender> itself"
                                     : "the param in <" + owner + " class=\"" + className + "\">";
      }
    }
  }
  return "";
}

class ParamRules : CheckRuleSet {
 public:
  using CheckRuleSet::CheckRuleSet;

  void checkParams(const CheckElement& component) {
    std::map<std::string, int> lines;
    for (const CheckElement& param : component.children("param")) {
      if (!checkParam(param, component.className())) {
        continue;
      }
      const auto [known, isNew] =
          lines.insert({CheckWords::lower(param.get("name")), param.line()});
      warnIf(!isNew, "duplicate-param", param, "name",
             "the param is set in line {} already; the last value counts", "one <param>",
             {std::to_string(known->second)});
    }
  }

  void warnOfIgnored(const CheckElement& param, const std::string& className) {
    const std::string given = param.get("name");
    const std::string kind = param.parent().tag();
    Words names;
    for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
      names.push_back(known.name);
    }
    const auto meant = CheckWords::nearest(given, names);
    if (meant && CheckWords::lower(*meant) == CheckWords::lower(CheckWords::trimmed(given))) {
      warn("ignored-param", param, "name",
           "the param \"{}\" is ignored: {} reads \"{}\", and case and blanks count", "name=\"{}\"",
           {given, className, *meant, *meant});
      return;
    }
    const auto advice =
        std::find_if(std::begin(ADVICE), std::end(ADVICE), [&](const Advice& candidate) {
          return kind == candidate.kind && className.find(candidate.of) != std::string::npos &&
                 CheckWords::lower(given) == candidate.name;
        });
    std::string instead = advice != std::end(ADVICE) ? advice->instead : placeOfParam(given, kind);
    if (instead.empty()) {
      instead = meant           ? "name=\"" + *meant + "\""
                : names.empty() ? "leave it out"
                                : CheckWords::oneOf(names);
    }
    warn("ignored-param", param, "name", "the param \"{}\" is ignored: {} reads none of that name",
         "{}", {given, className, instead});
  }

 private:
  /// Returns whether the component takes the param.
  bool checkParam(const CheckElement& param, const std::string& className) {
    const std::string given = param.get("name");
    for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
      if (given != known.name &&
          (!known.isInAnyCase || CheckWords::lower(given) != CheckWords::lower(known.name))) {
        continue;
      }
      if (param.get("value").empty()) {
        warn("empty-param", param, "", "the param \"{}\" is ignored: its value is empty",
             "value=\"...\", or no such param", {given});
        return false;
      }
      checkValue(param, known, param.get("value"));
      return true;
    }
    warnOfIgnored(param, className);
    return false;
  }

  void checkValue(const CheckElement& param, const LOGParameterTable::Param& known,
                  const std::string& value) {
    switch (known.kind) {
      case Kind::Text:
        break;
      case Kind::Bytes:
        checkFileSize(param, value);
        break;
      case Kind::Number:
      case Kind::Port:
      case Kind::Backups:
        checkNumber(param, known.kind, value);
        break;
      case Kind::Switch:
        warnIf(!CheckWords::isTruthValue(value), "truth-value", param, "value",
               "\"{}\" means true: everything does but \"false\"",
               "value=\"true\" or value=\"false\"", {value});
        break;
      case Kind::Facility:
        checkFacility(param, value);
        break;
      case Kind::Level:
      case Kind::LevelOrNone:
        checkLevel(param, known, value);
        break;
      case Kind::DateFormat:
        checkDateFormat(
            param, value,
            value == "NULL" || CheckWords::contains({"iso8601", "absolute", "date", "relative"},
                                                    CheckWords::lower(value)),
            "\"{}\" is no date format: no date is written", "value=\"{}\"");
        break;
      case Kind::Host:
        warnIf(hasPort(value), "port", param, "value",
               "\"{}\" is looked up as the name of a host: syslog datagrams go to port 514",
               "value=\"{}\"", {value, value.substr(0, value.find(':'))});
        break;
      case Kind::Pattern:
        checkPattern(param, value);
    }
  }

  void checkFacility(const CheckElement& param, const std::string& value) {
    Words names;
    for (int code = 0; code <= 184; code += 8) {
      const std::string facility = LOGSyslogAppender::getFacilityString(code).toStdString();
      if (!facility.empty()) {
        names.push_back(facility);
      }
    }
    warnIf(LOGSyslogAppender::getFacility(value) < 0, "unknown-facility", param, "value",
           "there is no facility \"{}\": it means user", "value=\"{}\"",
           {value, CheckWords::nearest(value, names).value_or("user")});
  }

  void checkDateFormat(const CheckElement& param, const std::string& value, bool isKnown,
                       const char* none, const char* instead) {
    const std::string meant = probableDateFormat(value);
    if (CheckWords::contains({"HH:mm:ss,SSS", "dd MMM yyyy HH:mm:ss,SSS"}, value)) {
      warn("twelve-hours", param, "value",
           "\"{}\" is written with the hours of half a day, 1 to 12, and without milliseconds",
           instead, {value, meant});
    } else if (!isKnown) {
      warn("unknown-date-format", param, "value", none, instead, {value, meant});
    }
  }

  void checkNumber(const CheckElement& param, Kind kind, const std::string& value) {
    constexpr int LARGEST_PORT = 65535;
    const CheckWords::Number number = CheckWords::number(value);
    if (!number.isWhole) {
      warn("number", param, "value", "\"{}\" is read as the number {}", "value=\"{}\"",
           {value, std::to_string(number.value), std::to_string(std::max(number.value, 1))});
    } else if (kind == Kind::Port && (number.value < 1 || number.value > LARGEST_PORT)) {
      warn("port", param, "value", "there is no port {}", "a number from 1 to 65535", {value});
    } else if (kind == Kind::Backups && number.value < 1) {
      warn("no-backup", param, "value",
           "without a backup a full file is emptied, and all that was in it is lost",
           "value=\"1\" or more");
    }
  }

  void checkFileSize(const CheckElement& param, const std::string& value) {
    constexpr long long MOST = std::numeric_limits<int>::max();
    constexpr int LEAST_THAT_MAKES_SENSE = 1024;
    static const std::map<std::string, int> SHIFTS{
        {"", 0},   {"b", 0},   {"bytes", 0}, {"k", 10}, {"kb", 10}, {"kib", 10},
        {"m", 20}, {"mb", 20}, {"mib", 20},  {"g", 30}, {"gb", 30}, {"gib", 30}};
    const CheckWords::Number number = CheckWords::number(value);
    const std::string bytes = std::to_string(number.value);
    std::string instead = "value=\"10485760\", or another number of bytes";
    if (!number.isWhole) {
      const auto unit = SHIFTS.find(CheckWords::lower(number.rest));
      if (unit != SHIFTS.end() && number.value > 0) {
        const long long meant =
            std::min(MOST, static_cast<long long>(number.value) << unit->second);
        instead = "value=\"" + std::to_string(meant) + "\"";
      }
      warn("file-size", param, "value",
           "\"{}\" means {} bytes: a size is a number of bytes up to 2147483647, without a unit",
           "{}", {value, bytes, instead});
    } else if (number.value < LEAST_THAT_MAKES_SENSE) {
      warn("file-size", param, "value",
           number.value < 0 ? "a size below 0 is never reached: the file grows on and on"
                            : "the file becomes a backup whenever it has " + bytes +
                                  " bytes, which is after every event or a few",
           instead);
    }
  }

  void checkLevel(const CheckElement& param, const LOGParameterTable::Param& known,
                  const std::string& value) {
    const bool isRequired = known.kind == Kind::Level;
    const std::size_t mark = value.rfind('#');
    const bool isLevelOfClass = mark != std::string::npos && value.substr(mark + 1) == "LOGLevel";
    if (!CheckWords::isLevel(value) && (isRequired || !isLevelOfClass)) {
      const std::string meant = CheckWords::probableLevel(value).value_or("INFO");
      warn("unknown-level", param, "value", "\"{}\" is no level: {}", "value=\"{}\"",
           {value, isRequired ? known.name + " becomes DEBUG" : "the filter matches nothing",
            meant});
    }
  }

  void checkPattern(const CheckElement& param, const std::string& value) {
    const CheckPattern pattern(value);
    for (const std::string& text : pattern.unknown()) {
      warn("unknown-specifier", param, "value",
           "\"{}\" is no specifier: it is written as it stands",
           "one of the letters c, d, m, n, p, r, t and x, or %% for a percent sign", {text});
    }
    for (const std::string& text : pattern.unfinished()) {
      warn("unknown-specifier", param, "value",
           "\"{}\" is the beginning of a specifier and is written as it stands",
           "a letter at its end, or %% for a percent sign", {text});
    }
    const auto& specifiers = pattern.specifiers();
    if (pattern.unknown().empty() && pattern.unfinished().empty() &&
        std::none_of(specifiers.begin(), specifiers.end(),
                     [](const CheckPattern::Specifier& known) { return known.letter == 'm'; })) {
      warn("no-message", param, "value", "the pattern has no %m, so the messages are not written",
           "%m in it");
    }
    for (const std::string escape : {"\\n", "\\t", "\\r"}) {
      warnIf(value.find(escape) != std::string::npos, "backslash", param, "value",
             "\"{}\" is written as a backslash and a letter",
             escape == "\\t" ? "&#9; for a tab" : "%n for a line end", {escape});
    }
    for (const CheckPattern::Specifier& specifier : specifiers) {
      checkSpecifier(param, specifier);
    }
  }

  void checkSpecifier(const CheckElement& param, const CheckPattern::Specifier& specifier) {
    const std::string& text = specifier.text;
    const std::string option = specifier.option.value_or("");
    const auto word = std::find_if(std::begin(WORDS), std::end(WORDS),
                                   [&](const auto& known) { return specifier.word == known.word; });
    if (word != std::end(WORDS)) {
      warn("unknown-specifier", param, "value",
           "\"{}{}\" is \"{}\" and the text \"{}\": a specifier has one letter", word->instead,
           {text, specifier.word.substr(1), text, specifier.word.substr(1)});
    } else if (specifier.letter == 'X' && !specifier.option) {
      warn("pattern-without-key", param, "value",
           "\"{}\" has no key: the layout is not made, and without another nothing is written",
           "%x, the nested context", {text});
    } else if (specifier.hasUnreadOption) {
      warn("unknown-specifier", param, "value",
           "the brace behind \"{}\" is written as it stands: nothing is in the braces, or none "
           "closes",
           "{}, or a text in braces behind it", {text, text});
    } else if (specifier.letter == 'X') {
      warn("nothing-to-show", param, "value", "\"{}\" shows nothing: no mapped context is kept",
           "%x, the nested context", {text});
    } else if (std::string("CFLMl").find(specifier.letter) != std::string::npos) {
      warn("nothing-to-show", param, "value", "\"{}\" shows {}: locations are not recorded",
           "leave it out", {text, specifier.letter == 'l' ? "nothing" : "\"?\""});
    } else if (specifier.letter == 'd' && specifier.option) {
      checkDateFormat(param, option, CheckWords::contains({"ISO8601", "ABSOLUTE", "DATE"}, option),
                      "\"{}\" is no date format of a pattern: no date is written", "%d{{}}");
    } else if (specifier.letter == 'c' && specifier.option) {
      checkPrecision(param, option);
    }
  }

  void checkPrecision(const CheckElement& param, const std::string& option) {
    const CheckWords::Number number = CheckWords::number(option);
    if (number.value < 1) {
      warn("precision", param, "value",
           "the precision \"{}\" is no positive number: the whole name is written", "%c{1}, or %c",
           {option});
    } else if (!number.isWhole) {
      const std::string value = std::to_string(number.value);
      warn("precision", param, "value", "the precision \"{}\" is read as {}", "%c{{}}",
           {option, value, value});
    }
  }
};

}  // namespace

void CheckRules::checkParams(const CheckElement& component, CheckFindings& findings) {
  ParamRules(findings).checkParams(component);
}

void CheckRules::warnOfIgnored(const CheckElement& param, const std::string& className,
                               CheckFindings& findings) {
  ParamRules(findings).warnOfIgnored(param, className);
}
