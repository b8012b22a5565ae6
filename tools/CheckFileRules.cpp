#include "tools/CheckFileRules.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <vector>

#include "platform/ZEBUtTerminal.h"
#include "tools/CheckWords.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* ROLLING = "LOGRollingFileAppender";

bool writesFile(const std::string& className) {
  return className == "LOGFileAppender" || className == ROLLING;
}

/// Whether the appender makes a backup whose name has that text behind the file's name and a dot.
bool makesBackup(const ZEBIDOM_Element& appender, const std::string& end) {
  const ZEBIDOM_Element most = CheckedDocument::paramOf(appender, "MaxBackupIndex");
  const int backups =
      most.isNull() ? 1 : CheckWords::number(CheckedDocument::attribute(most, "value")).value;
  const int index = CheckWords::number(end).value;
  return CheckedDocument::classOf(appender) == ROLLING && index > 0 && index <= backups &&
         end == std::to_string(index);
}

std::string assignment(const std::string& name, const std::string& value) {
  return name + "=" + CheckWords::quoted(value);
}

}  // namespace

void CheckFileRules::checkAll() {
  for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
    if (!writesFile(CheckedDocument::classOf(appender))) {
      continue;
    }
    const ZEBIDOM_Element file = CheckedDocument::paramOf(appender, "File");
    if (file.isNull()) {
      m_findings.warn("no-file", appender, "",
                      "the appender has no File: nothing is opened, every event is lost",
                      "<param name=\"File\" value=\"...\"/>");
    } else {
      checkFile(appender, file);
    }
  }
  checkSharedFiles();
}

void CheckFileRules::checkFile(const ZEBIDOM_Element& appender, const ZEBIDOM_Element& param) {
  const std::string value = CheckedDocument::attribute(param, "value");
  const bool isRolling = CheckedDocument::classOf(appender) == ROLLING;
  if (value.find('%') != std::string::npos || value.front() == '~') {
    m_findings.warn("file-name", param, "value",
                    CheckWords::quoted(value) +
                        " is taken as it stands: there are no patterns, variables or "
                        "home directories in a file name",
                    "the name of the file");
  } else if (fs::path::preferred_separator == '/' && value.find('\\') != std::string::npos) {
    std::string meant = value;
    std::replace(meant.begin(), meant.end(), '\\', '/');
    m_findings.warn("file-name", param, "value",
                    "the backslashes in " + CheckWords::quoted(value) +
                        " are part of the file's name on this system",
                    assignment("value", meant));
  }
  if (CheckWords::trimmed(value) != value) {
    m_findings.warn(
        "blanks", param, "value",
        "the blanks around " + CheckWords::quoted(value) + " are part of the file's name",
        assignment("value", CheckWords::trimmed(value)));
  }
  const std::size_t dot = value.rfind('.');
  const std::size_t separator = value.find_last_of("/\\");
  const bool mayGetProcessId =
      isRolling && CheckedDocument::attribute(appender, "addProcID") != "false";
  if (mayGetProcessId && dot != std::string::npos && separator != std::string::npos &&
      dot < separator) {
    m_findings.warn("process-id", param, "value",
                    "the process id goes before the last dot, which is in the directory's name: " +
                        CheckWords::quoted(value.substr(0, dot) + (dot == 0 ? "4711" : "_4711") +
                                           value.substr(dot)) +
                        " when the program configures with process ids",
                    "a file name with a dot, or addProcID=\"false\"");
  }
  checkPlaceOfFile(param, value, isRolling);
}

void CheckFileRules::checkPlaceOfFile(const ZEBIDOM_Element& param, const std::string& value,
                                      bool isRolling) {
  const fs::path path = fs::u8path(m_directory) / fs::u8path(value);
  const fs::path directory = path.parent_path().empty() ? fs::path(".") : path.parent_path();
  const std::string shown = CheckWords::quoted(fs::u8path(value).parent_path().empty()
                                                   ? m_directory
                                                   : fs::u8path(value).parent_path().u8string());
  std::error_code ignored;
  if (!fs::is_directory(directory, ignored)) {
    m_findings.warn("directory", param, "value",
                    "the directory " + shown +
                        " does not exist, and is not made: every event is lost until it is there",
                    "a directory that exists, or make it before the program starts");
  } else if (fs::is_directory(path, ignored)) {
    m_findings.warn("directory", param, "value",
                    CheckWords::quoted(value) + " is a directory, not a file",
                    "the name of a file");
  } else if (isRolling && fs::exists(path, ignored) && !fs::is_regular_file(path, ignored)) {
    m_findings.warn("file-name", param, "value",
                    CheckWords::quoted(value) +
                        " is no ordinary file, and is renamed when what was written fills one",
                    "class=\"LOGFileAppender\"");
  } else if (fs::exists(path, ignored) && !ZEBUtTerminal::mayWrite(path.u8string())) {
    m_findings.warn("not-writable", param, "value",
                    "the file " + CheckWords::quoted(value) + " cannot be written by this user",
                    "another file, or the right to write");
  } else if ((isRolling || !fs::exists(path, ignored)) &&
             !ZEBUtTerminal::mayWrite(directory.u8string())) {
    m_findings.warn("not-writable", param, "value",
                    "this user may make no files in the directory " + shown,
                    "another directory, or the right to write");
  }
}

/// Whether a logger refers to both, and no filter keeps anything from either.
bool CheckFileRules::takeTheSameEvents(const ZEBIDOM_Element& one,
                                       const ZEBIDOM_Element& other) const {
  if (!CheckedDocument::children(one, "filter").empty() ||
      !CheckedDocument::children(other, "filter").empty()) {
    return false;
  }
  const auto refersTo = [](const ZEBIDOM_Element& logger, const ZEBIDOM_Element& appender) {
    const auto references = CheckedDocument::children(logger, "appender-ref");
    return std::any_of(references.begin(), references.end(), [&](const ZEBIDOM_Element& reference) {
      return reference.getAttribute("ref") == appender.getAttribute("name");
    });
  };
  const auto elements = CheckedDocument::children(m_document.root());
  return std::any_of(elements.begin(), elements.end(), [&](const ZEBIDOM_Element& element) {
    return refersTo(element, one) && refersTo(element, other);
  });
}

void CheckFileRules::checkSharedFiles() {
  struct Use {
    ZEBIDOM_Element appender;
    ZEBIDOM_Element param;
    bool isHarmful;  // takes away what others have written
  };
  std::map<std::string, std::vector<Use>> files;
  for (const ZEBIDOM_Element& appender : m_document.elements("appender")) {
    const ZEBIDOM_Element file = CheckedDocument::paramOf(appender, "File");
    const bool counts =
        m_document.appender(CheckedDocument::attribute(appender, "name")) == appender;
    if (!writesFile(CheckedDocument::classOf(appender)) || file.isNull() || !counts) {
      continue;
    }
    const ZEBIDOM_Element append = CheckedDocument::paramOf(appender, "Append");
    const bool isEmptied =
        CheckWords::lower(CheckedDocument::attribute(append, "value")) == "false";
    // The same file has several names: relative and absolute ones, and links.
    const fs::path path =
        fs::u8path(m_directory) / fs::u8path(CheckedDocument::attribute(file, "value"));
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(path, failed);
    files[(failed ? path.lexically_normal() : canonical).u8string()].push_back(
        {appender, file, isEmptied || CheckedDocument::classOf(appender) == ROLLING});
  }
  for (const auto& [name, uses] : files) {
    const bool isHarmful =
        std::any_of(uses.begin(), uses.end(), [](const Use& use) { return use.isHarmful; });
    for (std::size_t i = 1; i < uses.size(); ++i) {
      const bool isTwice = !isHarmful && takeTheSameEvents(uses[0].appender, uses[i].appender);
      if (isHarmful || isTwice) {
        m_findings.warn(
            "shared-file", uses[i].param, "value",
            "the appender " +
                CheckWords::quoted(CheckedDocument::attribute(uses[0].appender, "name")) +
                " writes to the same file, and " +
                (isTwice ? "a logger refers to both, so that its events are in it twice"
                         : "one of them empties or renames it under the other"),
            "a file of its own, or one appender for both");
      }
    }
    const std::string beginning = name + ".";
    for (auto other = files.lower_bound(beginning);
         other != files.end() && other->first.compare(0, beginning.size(), beginning) == 0;
         ++other) {
      const std::string end = other->first.substr(beginning.size());
      const auto roller = std::find_if(
          uses.begin(), uses.end(), [&](const Use& use) { return makesBackup(use.appender, end); });
      for (const Use& use : roller == uses.end() ? std::vector<Use>() : other->second) {
        m_findings.warn(
            "shared-file", use.param, "value",
            "the appender " +
                CheckWords::quoted(CheckedDocument::attribute(roller->appender, "name")) +
                " renames its full file to this name, and removes what is there",
            "a name that no backup gets");
      }
    }
  }
}
