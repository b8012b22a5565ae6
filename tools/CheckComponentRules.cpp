#include "tools/CheckComponentRules.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <system_error>
#include <utility>

#include "config/LOGComponentFactory.h"
#include "config/LOGParameterTable.h"
#include "net/LOGSyslogAppender.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/CheckPattern.h"
#include "tools/CheckWords.h"

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

constexpr const char* ROLLING = "LOGRollingFileAppender";
constexpr const char* SYSLOG = "LOGSyslogAppender";
constexpr const char* ASYNC = "LOGAsyncAppender";
constexpr const char* UDP = "LOGLocalUDPAppender";
constexpr const char* TCP = "LOGTCPSocketAppender";
constexpr const char* DENY_ALL = "LOGDenyAllFilter";

/// Options that the classes have and that a document does not set, or under another name.
struct Advice {
  const char* kind;  // the element that the param stands in
  const char* name;
  const char* instead;
};
constexpr Advice ADVICE[] = {
    {"appender", "threshold",
     "<filter class=\"LOGLevelRangeFilter\"> with LevelMin; a threshold that a program sets is an "
     "upper bound"},
    {"appender", "target", "setTarget(\"err\") in the program; a document means standard output"},
    {"appender", "bufferedio",
     "setBufferedIO(1) in the program, which loses what is in the buffer when it is killed; from a "
     "document every event is written at once"},
    {"appender", "buffersize", "setBufferSize in the program; from a document a queue holds 128"},
    {"appender", "immediateflush", "nothing: from a document every event is written at once"},
    {"appender", "encoding", "nothing: everything is written in UTF-8"},
    {"appender", "maxfilesize", "name=\"MaximumFileSize\", in bytes"},
    {"appender", "filename", "name=\"File\""},
    {"appender", "sysloghost", "name=\"Host\""},
    {"appender", "facilityprinting", "setFacilityPrinting(1) in the program"},
    {"layout", "title", "log4zeb page --title"},
    {"layout", "locationinfo", "nothing: locations are not recorded"},
    {"layout", "timezone", "nothing: dates are in the local time of the process"},
    {"layout", "pattern", "name=\"ConversionPattern\""},
    {"layout", "threadprinting", "class=\"LOGPatternLayout\" with %t where it is wanted"},
    {"layout", "contextprinting", "class=\"LOGPatternLayout\" with %x where it is wanted"},
    {"filter", "acceptonmatch",
     "nothing to accept what matches; a document cannot make a filter deny what matches"},
};

bool contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string assignment(const std::string& name, const std::string& value) {
  return name + "=" + CheckWords::quoted(value);
}

bool writesFile(const std::string& className) {
  return className == "LOGFileAppender" || className == ROLLING;
}

bool needsLayout(const std::string& className) {
  return writesFile(className) || className == "LOGConsoleAppender" || className == SYSLOG;
}

/// The tag under which the library finds the params of a class.
std::string className(const ZEBIDOM_Element& component) {
  return CheckedDocument::classOf(component);
}

bool isDateFormat(const std::string& text, bool isInPattern) {
  const bool isPattern = text == "HH:mm:ss,SSS" || text == "dd MMM yyyy HH:mm:ss,SSS";
  const Words exact{"ISO8601", "ABSOLUTE", "DATE"};
  if (isInPattern) {
    return isPattern || contains(exact, text);
  }
  const Words inAnyCase{"iso8601", "absolute", "date", "relative"};
  return isPattern || text == "NULL" || contains(inAnyCase, CheckWords::lower(text));
}

std::string probableDateFormat(const std::string& text) {
  return CheckWords::nearest(
             text, {"ISO8601", "ABSOLUTE", "DATE", "HH:mm:ss,SSS", "dd MMM yyyy HH:mm:ss,SSS"})
      .value_or("ISO8601");
}

}  // namespace

CheckComponentRules::CheckComponentRules(const CheckedDocument& document, std::string directory,
                                         CheckFindings& findings)
    : m_document(document), m_directory(std::move(directory)), m_findings(findings) {}

void CheckComponentRules::warn(const char* rule, const ZEBIDOM_Element& element,
                               const char* attribute, const std::string& text,
                               const std::string& instead) {
  m_findings.warn(rule, m_document.placeOf(element, attribute), text, instead);
}

void CheckComponentRules::checkAll() {
  for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
    checkAppender(appender);
  }
  checkSharedFiles();
}

ZEBIDOM_Element CheckComponentRules::paramOf(const ZEBIDOM_Element& component, const char* name,
                                             bool isInAnyCase) {
  ZEBIDOM_Element found;
  for (const ZEBIDOM_Element& param : CheckedDocument::children(component, "param")) {
    const std::string given = CheckedDocument::attribute(param, "name");
    const bool isIt =
        isInAnyCase ? CheckWords::lower(given) == CheckWords::lower(name) : given == name;
    if (isIt && !CheckedDocument::attribute(param, "value").empty()) {
      found = param;
    }
  }
  return found;
}

bool CheckComponentRules::checkClass(const ZEBIDOM_Element& element, const Words& classes,
                                     const std::string& consequence) {
  const std::string name = className(element);
  if (contains(classes, name)) {
    return true;
  }
  const auto meant = CheckWords::nearest(name, classes);
  warn("unknown-class", element, "class",
       "there is no " + CheckedDocument::tag(element) + " of class " + CheckWords::quoted(name) +
           ": " + consequence,
       meant ? assignment("class", *meant) : "one of " + CheckWords::either(classes));
  return false;
}

void CheckComponentRules::checkAppender(const ZEBIDOM_Element& appender) {
  if (!checkClass(appender, LOGComponentFactory::appenderClasses(),
                  "the appender is not built, and references to it are left out")) {
    return;
  }
  const std::string name = className(appender);
  checkParams(appender);
  checkLayouts(appender);
  for (const ZEBIDOM_Element& filter : CheckedDocument::children(appender, "filter")) {
    checkFilter(filter);
  }
  for (const ZEBIDOM_Element& handler : CheckedDocument::children(appender, "errorHandler")) {
    checkErrorHandler(handler);
  }
  if (writesFile(name)) {
    const ZEBIDOM_Element file = paramOf(appender, "File");
    if (file.isNull()) {
      warn("no-file", appender, "",
           "the appender has no File: nothing is opened, every event is lost",
           "<param name=\"File\" value=\"...\"/>");
    } else {
      checkFile(appender, file);
    }
  } else if (name == ASYNC && CheckedDocument::children(appender, "appender-ref").empty()) {
    warn("async-without-appender", appender, "",
         "the asynchronous appender passes events on to no appender, so they are lost",
         "<appender-ref ref=\"...\"/> inside of it");
  } else if (name == TCP) {
    warn("sends-nothing", appender, "class",
         "LOGTCPSocketAppender keeps its options and sends nothing: every event is lost",
         "class=\"LOGSyslogAppender\" or class=\"LOGLocalUDPAppender\"");
  }
}

void CheckComponentRules::checkLayouts(const ZEBIDOM_Element& appender) {
  const std::string name = className(appender);
  const std::vector<ZEBIDOM_Element> layouts = CheckedDocument::children(appender, "layout");
  if (layouts.empty() && needsLayout(name)) {
    warn("no-layout", appender, "", "the appender has no layout, so it writes nothing",
         "<layout class=\"LOGSimpleLayout\"/> or another one inside of it");
  }
  for (const ZEBIDOM_Element& layout : layouts) {
    if (!checkClass(layout, LOGComponentFactory::layoutClasses(),
                    "the appender has no layout by this element")) {
      continue;
    }
    checkParams(layout);
    if (!needsLayout(name)) {
      warn("layout-without-effect", layout, "", "a layout has no effect in " + name,
           name == ASYNC ? "the layout in the appenders that it refers to" : "leave it out");
    } else if (layout != layouts.back()) {
      warn("duplicate-layout", layout, "", "there is a layout after this one; the last one counts",
           "one <layout>");
    } else {
      checkLineEnd(layout, name);
    }
  }
}

void CheckComponentRules::checkLineEnd(const ZEBIDOM_Element& layout,
                                       const std::string& appenderClass) {
  const std::string name = className(layout);
  const ZEBIDOM_Element param =
      name == "LOGPatternLayout" ? paramOf(layout, "ConversionPattern", true) : ZEBIDOM_Element();
  if (!param.isNull()) {
    const CheckPattern pattern(CheckedDocument::attribute(param, "value"));
    if (appenderClass == SYSLOG && pattern.endsWithLineEnd()) {
      warn("syslog-line-end", param, "value",
           "a datagram is one message: the line end of the pattern becomes a part of it",
           "the pattern without %n at its end");
    } else if (appenderClass != SYSLOG && !pattern.hasLineEnd()) {
      warn("no-line-end", param, "value", "the pattern has no line end: all events become one line",
           "%n at its end");
    }
  } else if (appenderClass == SYSLOG) {
    warn("syslog-line-end", layout, "",
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
  checkParams(filter);
}

void CheckComponentRules::checkErrorHandler(const ZEBIDOM_Element& handler) {
  checkClass(handler, LOGComponentFactory::errorHandlerClasses(),
             "it becomes a handler that does nothing");
  warn("error-handler", handler, "",
       "the appenders of the library report failures in the diagnostics and never call an error "
       "handler",
       "leave it out");
  for (const ZEBIDOM_Element& param : CheckedDocument::children(handler, "param")) {
    warnOfIgnored(param, className(handler));
  }
}

void CheckComponentRules::checkParams(const ZEBIDOM_Element& component) {
  std::map<std::string, int> lines;
  for (const ZEBIDOM_Element& param : CheckedDocument::children(component, "param")) {
    checkParam(param, className(component));
    const std::string name = CheckWords::lower(CheckedDocument::attribute(param, "name"));
    const auto [known, isNew] = lines.insert({name, param.getLine()});
    if (!isNew && !name.empty()) {
      warn("duplicate-param", param, "name",
           "the param is set in line " + std::to_string(known->second) +
               " already; the last value counts",
           "one <param>");
    }
  }
}

void CheckComponentRules::checkParam(const ZEBIDOM_Element& param, const std::string& className) {
  const std::string given = CheckedDocument::attribute(param, "name");
  for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
    const bool isIt = known.isInAnyCase ? CheckWords::lower(given) == CheckWords::lower(known.name)
                                        : given == known.name;
    if (isIt && CheckedDocument::attribute(param, "value").empty()) {
      warn("empty-param", param, "",
           "the param " + CheckWords::quoted(given) + " is ignored: its value is empty",
           "value=\"...\", or no such param");
      return;
    }
    if (isIt) {
      checkValue(param, className, known.name);
      return;
    }
  }
  warnOfIgnored(param, className);
}

void CheckComponentRules::warnOfIgnored(const ZEBIDOM_Element& param,
                                        const std::string& className) {
  const std::string given = CheckedDocument::attribute(param, "name");
  const std::string kind = CheckedDocument::tag(ZEBIDOM_Element(param.getParentNode()));
  Words names;
  for (const LOGParameterTable::Param& known : LOGParameterTable::paramsOf(className)) {
    names.push_back(known.name);
  }
  std::string text = "the param " + CheckWords::quoted(given) + " is ignored: " + className +
                     " reads none of that name";
  std::string instead = names.empty() ? "leave it out" : "one of " + CheckWords::either(names);
  const auto meant = CheckWords::nearest(given, names);
  const auto advice =
      std::find_if(std::begin(ADVICE), std::end(ADVICE), [&](const Advice& candidate) {
        return kind == candidate.kind && CheckWords::lower(given) == candidate.name;
      });
  if (meant && CheckWords::lower(*meant) == CheckWords::lower(CheckWords::trimmed(given))) {
    text = "the param " + CheckWords::quoted(given) + " is ignored: " + className + " reads " +
           CheckWords::quoted(*meant) + ", and case and blanks count";
    instead = assignment("name", *meant);
  } else if (advice != std::end(ADVICE)) {
    instead = advice->instead;
  } else if (meant) {
    instead = assignment("name", *meant);
  }
  warn("ignored-param", param, "name", text, instead);
}

void CheckComponentRules::checkValue(const ZEBIDOM_Element& param, const std::string& className,
                                     const std::string& name) {
  const std::string value = CheckedDocument::attribute(param, "value");
  if (name == "MaximumFileSize") {
    checkFileSize(param);
  } else if (name == "MaxBackupIndex" || name == "Port" || name == "ReconnectionDelay") {
    checkNumber(param, name);
  } else if (name == "Append" || name == "LocationInfo" || name == "Secure") {
    if (!CheckWords::isTruthValue(value)) {
      warn("truth-value", param, "value",
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
    warn("unknown-facility", param, "value",
         "there is no facility " + CheckWords::quoted(value) + ": it means user",
         assignment("value", CheckWords::nearest(value, names).value_or("user")));
  } else if (name == "LevelMin" || name == "LevelMax" || name == "LevelToMatch") {
    checkLevelValue(param, className, name);
  } else if (name == "DateFormat" && !isDateFormat(value, false)) {
    warn("unknown-date-format", param, "value",
         CheckWords::quoted(value) + " is no date format: no date is written",
         assignment("value", probableDateFormat(value)));
  } else if (name == "ConversionPattern") {
    checkPattern(param);
  }
}

void CheckComponentRules::checkNumber(const ZEBIDOM_Element& param, const std::string& name) {
  constexpr int LARGEST_PORT = 65535;
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckWords::Number number = CheckWords::number(value);
  if (!number.isWhole) {
    warn("number", param, "value",
         CheckWords::quoted(value) + " is read as the number " + std::to_string(number.value),
         assignment("value", std::to_string(std::max(number.value, 1))));
  } else if (name == "Port" && (number.value < 1 || number.value > LARGEST_PORT)) {
    warn("port", param, "value", "there is no port " + value, "a number from 1 to 65535");
  } else if (name == "MaxBackupIndex" && number.value < 1) {
    warn("no-backup", param, "value",
         "without a backup a full file is emptied, and all that was in it is lost",
         "value=\"1\" or more");
  }
}

void CheckComponentRules::checkFileSize(const ZEBIDOM_Element& param) {
  constexpr long long MOST = std::numeric_limits<int>::max();
  constexpr int LEAST_THAT_MAKES_SENSE = 1024;
  static const std::map<std::string, long long> UNITS{
      {"k", 1LL << 10}, {"kb", 1LL << 10}, {"kib", 1LL << 10},
      {"m", 1LL << 20}, {"mb", 1LL << 20}, {"mib", 1LL << 20},
      {"g", 1LL << 30}, {"gb", 1LL << 30}, {"gib", 1LL << 30}};
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckWords::Number number = CheckWords::number(value);
  const std::string bytes = std::to_string(number.value);
  if (!number.isWhole) {
    const auto unit = UNITS.find(CheckWords::lower(number.rest));
    const bool hasUnit = unit != UNITS.end() && number.value > 0;
    const long long meant =
        hasUnit ? std::min<long long>(MOST, number.value * unit->second) : 10485760;
    warn("file-size", param, "value",
         CheckWords::quoted(value) + " means " + bytes +
             " bytes: a size is a number of bytes up to 2147483647, without a unit",
         assignment("value", std::to_string(hasUnit || number.rest.size() ? meant : MOST)));
  } else if (number.value < 0) {
    warn("file-size", param, "value", "a size below 0 is never reached: the file grows on and on",
         "value=\"10485760\", or another number of bytes");
  } else if (number.value < LEAST_THAT_MAKES_SENSE) {
    warn("file-size", param, "value",
         "the file becomes a backup whenever it has " + bytes +
             " bytes, which is after every event or a few",
         "value=\"10485760\", or another number of bytes");
  }
}

void CheckComponentRules::checkLevelValue(const ZEBIDOM_Element& param,
                                          const std::string& className, const std::string& name) {
  std::string value = CheckedDocument::attribute(param, "value");
  const std::string instead =
      assignment("value", CheckWords::probableLevel(value).value_or("INFO"));
  if (className == "LOGLevelMatchFilter") {
    const std::size_t mark = value.rfind('#');
    const bool isLevelOfClass = mark != std::string::npos && value.substr(mark + 1) == "LOGLevel";
    if (!CheckWords::isLevel(value) && !isLevelOfClass) {
      warn("unknown-level", param, "value",
           CheckWords::quoted(value) + " is no level: the filter matches nothing", instead);
    }
  } else if (!CheckWords::isLevel(value)) {
    warn("unknown-level", param, "value",
         CheckWords::quoted(value) + " is no level: " + name + " becomes DEBUG", instead);
  }
}

void CheckComponentRules::checkPattern(const ZEBIDOM_Element& param) {
  const std::string value = CheckedDocument::attribute(param, "value");
  const CheckPattern pattern(value);
  for (const std::string& text : pattern.unknown()) {
    warn("unknown-specifier", param, "value",
         CheckWords::quoted(text) + " is no specifier: it is written as it stands",
         "one of the letters c, d, m, n, p, r, t and x, or %% for a percent sign");
  }
  for (const std::string& text : pattern.unfinished()) {
    warn("unknown-specifier", param, "value",
         CheckWords::quoted(text) + " is the beginning of a specifier and is written as it stands",
         "a letter at its end, or %% for a percent sign");
  }
  for (const char* const escape : {"\\n", "\\t", "\\r"}) {
    if (value.find(escape) != std::string::npos) {
      warn("backslash", param, "value",
           CheckWords::quoted(escape) + " is written as a backslash and a letter",
           *(escape + 1) == 't' ? "&#9; for a tab" : "%n for a line end");
    }
  }
  checkPatternOptions(param);
}

void CheckComponentRules::checkPatternOptions(const ZEBIDOM_Element& param) {
  const CheckPattern pattern(CheckedDocument::attribute(param, "value"));
  for (const CheckPattern::Specifier& specifier : pattern.specifiers()) {
    const std::string option = specifier.option.value_or("");
    const std::string text = CheckWords::quoted(specifier.text);
    if (specifier.letter == 'X' && !specifier.option) {
      warn("pattern-without-key", param, "value",
           text + " has no key: the layout is not made, and the appender writes nothing",
           "%x, the nested context");
    } else if (specifier.letter == 'X') {
      warn("nothing-to-show", param, "value", text + " shows nothing: no mapped context is kept",
           "%x, the nested context");
    } else if (std::string("CFLMl").find(specifier.letter) != std::string::npos) {
      warn("nothing-to-show", param, "value",
           text + " shows " + (specifier.letter == 'l' ? "nothing" : "\"?\"") +
               ": locations are not recorded",
           "leave it out");
    } else if (specifier.letter == 'd' && specifier.option && !isDateFormat(option, true)) {
      warn("unknown-date-format", param, "value",
           CheckWords::quoted(option) + " is no date format of a pattern: no date is written",
           "%d{" + probableDateFormat(option) + "}");
    } else if (specifier.letter == 'c' && specifier.option &&
               CheckWords::number(option).value < 1) {
      warn("precision", param, "value",
           "the precision " + CheckWords::quoted(option) +
               " is no positive number: the whole name is written",
           "%c{1}, or %c");
    }
  }
}

void CheckComponentRules::checkFile(const ZEBIDOM_Element& appender, const ZEBIDOM_Element& param) {
  const std::string value = CheckedDocument::attribute(param, "value");
  const bool isRolling = className(appender) == ROLLING;
  if (value.find('%') != std::string::npos || value.front() == '~') {
    warn("file-name", param, "value",
         CheckWords::quoted(value) +
             " is taken as it stands: there are no patterns, variables or "
             "home directories in a file name",
         "the name of the file");
  }
  if (CheckWords::trimmed(value) != value) {
    warn("blanks", param, "value",
         "the blanks around " + CheckWords::quoted(value) + " are part of the file's name",
         assignment("value", CheckWords::trimmed(value)));
  }
  const std::size_t dot = value.rfind('.');
  const std::size_t separator = value.find_last_of("/\\");
  const bool mayGetProcessId =
      isRolling && CheckWords::lower(CheckedDocument::attribute(appender, "addProcID")) != "false";
  if (mayGetProcessId && dot != std::string::npos && separator != std::string::npos &&
      dot < separator) {
    warn("process-id", param, "value",
         "the process id goes before the last dot, which is in the directory's name: " +
             CheckWords::quoted(value.substr(0, dot) + (dot == 0 ? "4711" : "_4711") +
                                value.substr(dot)) +
             " when the program configures with process ids",
         "a file name with a dot, or addProcID=\"false\"");
  }
  checkPlaceOfFile(param, value, isRolling);
}

void CheckComponentRules::checkPlaceOfFile(const ZEBIDOM_Element& param, const std::string& value,
                                           bool isRolling) {
  const fs::path path = fs::u8path(m_directory) / fs::u8path(value);
  const fs::path directory = path.parent_path().empty() ? fs::path(".") : path.parent_path();
  const std::string shown = CheckWords::quoted(fs::u8path(value).parent_path().empty()
                                                   ? m_directory
                                                   : fs::u8path(value).parent_path().u8string());
  std::error_code ignored;
  if (!fs::is_directory(directory, ignored)) {
    warn("directory", param, "value",
         "the directory " + shown +
             " does not exist, and is not made: every event is lost until it is there",
         "a directory that exists, or make it before the program starts");
  } else if (fs::is_directory(path, ignored)) {
    warn("directory", param, "value", CheckWords::quoted(value) + " is a directory, not a file",
         "the name of a file");
  } else if (fs::exists(path, ignored) && !ZEBUtTerminal::mayWrite(path.u8string())) {
    warn("not-writable", param, "value",
         "the file " + CheckWords::quoted(value) + " cannot be written by this user",
         "another file, or the right to write");
  } else if ((isRolling || !fs::exists(path, ignored)) &&
             !ZEBUtTerminal::mayWrite(directory.u8string())) {
    warn("not-writable", param, "value", "this user may make no files in the directory " + shown,
         "another directory, or the right to write");
  }
}

void CheckComponentRules::checkSharedFiles() {
  struct Use {
    ZEBIDOM_Element appender;
    ZEBIDOM_Element param;
    bool isHarmful;  // takes away what others have written
  };
  std::map<std::string, std::vector<Use>> files;
  for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
    const ZEBIDOM_Element file = paramOf(appender, "File");
    if (!writesFile(className(appender)) || file.isNull()) {
      continue;
    }
    const ZEBIDOM_Element append = paramOf(appender, "Append");
    const bool isEmptied =
        CheckWords::lower(CheckedDocument::attribute(append, "value")) == "false";
    const fs::path path = fs::u8path(CheckedDocument::attribute(file, "value"));
    files[path.lexically_normal().u8string()].push_back(
        {appender, file, isEmptied || className(appender) == ROLLING});
  }
  for (const auto& [name, uses] : files) {
    const bool isHarmful =
        std::any_of(uses.begin(), uses.end(), [](const Use& use) { return use.isHarmful; });
    for (std::size_t i = 1; isHarmful && i < uses.size(); ++i) {
      warn("shared-file", uses[i].param, "value",
           "the appender " +
               CheckWords::quoted(CheckedDocument::attribute(uses[0].appender, "name")) +
               " writes to the same file, and one of them empties or renames it under the other",
           "a file of its own, or one appender for both");
    }
  }
}
