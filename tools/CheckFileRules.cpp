#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

#include "platform/ZEBUtTerminal.h"
#include "tools/CheckRules.h"
#include "tools/CheckWords.h"

namespace fs = std::filesystem;

namespace {

bool isRolling(const CheckElement& appender) {
  return appender.className() == "LOGRollingFileAppender";
}

bool writesFile(const CheckElement& appender) {
  return isRolling(appender) || appender.className() == "LOGFileAppender";
}

/// Whether the appender makes a backup whose name has that text behind the file's name and a dot.
bool makesBackup(const CheckElement& appender, const std::string& end) {
  const CheckElement most = appender.param("MaxBackupIndex");
  const int backups = most.isNull() ? 1 : CheckWords::number(most.get("value")).value;
  const int index = CheckWords::number(end).value;
  return isRolling(appender) && index > 0 && index <= backups && end == std::to_string(index);
}

class FileRules : CheckRuleSet {
 public:
  FileRules(std::string directory, CheckFindings& findings)
      : CheckRuleSet(findings), m_directory(std::move(directory)) {}

  void checkAll() {
    for (const CheckElement& appender : m_document.elements("appender")) {
      const CheckElement file = appender.param("File");
      if (!writesFile(appender)) {
        continue;
      }
      if (file.isNull()) {
        warn("no-file", appender, "",
             "the appender has no File: nothing is opened, every event is lost",
             "<param name=\"File\" value=\"...\"/>");
      } else {
        checkName(appender, file, file.get("value"));
        checkPlaceOfFile(file, file.get("value"), isRolling(appender));
      }
    }
    checkSharedFiles();
  }

 private:
  void checkName(const CheckElement& appender, const CheckElement& param,
                 const std::string& value) {
    if (value.find('%') != std::string::npos || value.front() == '~') {
      warn(
          "file-name", param, "value",
          "\"{}\" is taken as it stands: there are no patterns, variables or home directories in a "
          "file name",
          "the name of the file", {value});
    } else if (fs::path::preferred_separator == '/' && value.find('\\') != std::string::npos) {
      std::string meant = value;
      std::replace(meant.begin(), meant.end(), '\\', '/');
      warn("file-name", param, "value",
           "the backslashes in \"{}\" are part of the file's name on this system", "value=\"{}\"",
           {value, meant});
    }
    if (const std::string meant = CheckWords::trimmed(value); meant != value) {
      warn("blanks", param, "value", "the blanks around \"{}\" are part of the file's name",
           "value=\"{}\"", {value, meant});
    }
    const std::size_t dot = value.rfind('.');
    const std::size_t separator = value.find_last_of("/\\");
    if (isRolling(appender) && appender.get("addProcID") != "false" && dot != std::string::npos &&
        separator != std::string::npos && dot < separator) {
      warn("process-id", param, "value",
           "the process id goes before the last dot, which is in the directory's name: \"{}\" when "
           "the program configures with process ids",
           "a file name with a dot, or addProcID=\"false\"",
           {value.substr(0, dot) + (dot == 0 ? "4711" : "_4711") + value.substr(dot)});
    }
  }

  void checkPlaceOfFile(const CheckElement& param, const std::string& value, bool isRolling) {
    const fs::path path = fs::u8path(m_directory) / fs::u8path(value);
    const fs::path directory = path.parent_path().empty() ? fs::path(".") : path.parent_path();
    const std::string parent = fs::u8path(value).parent_path().u8string();
    const std::string shown = parent.empty() ? m_directory : parent;
    std::error_code ignored;
    const bool exists = fs::exists(path, ignored);
    if (!fs::is_directory(directory, ignored)) {
      warn("directory", param, "value",
           "the directory \"{}\" does not exist, and is not made: every event is lost until it is "
           "there",
           "a directory that exists, or make it before the program starts", {shown});
    } else if (fs::is_directory(path, ignored)) {
      warn("directory", param, "value", "\"{}\" is a directory, not a file", "the name of a file",
           {value});
    } else if (isRolling && exists && !fs::is_regular_file(path, ignored)) {
      warn("file-name", param, "value",
           "\"{}\" is no ordinary file, and is renamed when what was written fills one",
           "class=\"LOGFileAppender\"", {value});
    } else if (exists && !ZEBUtTerminal::mayWrite(path.u8string())) {
      warn("not-writable", param, "value", "the file \"{}\" cannot be written by this user",
           "another file, or the right to write", {value});
    } else if ((isRolling || !exists) && !ZEBUtTerminal::mayWrite(directory.u8string())) {
      warn("not-writable", param, "value", "this user may make no files in the directory \"{}\"",
           "another directory, or the right to write", {shown});
    }
  }

  /// Whether a logger refers to both, and no filter keeps anything from either.
  bool takeTheSameEvents(const CheckElement& one, const CheckElement& other) const {
    const auto refersTo = [](const CheckElement& logger, const CheckElement& appender) {
      const auto references = logger.children("appender-ref");
      return std::any_of(references.begin(), references.end(), [&](const CheckElement& reference) {
        return reference.get("ref") == appender.get("name");
      });
    };
    const auto elements = m_document.root().children();
    return one.children("filter").empty() && other.children("filter").empty() &&
           std::any_of(elements.begin(), elements.end(), [&](const CheckElement& element) {
             return refersTo(element, one) && refersTo(element, other);
           });
  }

  /// The same file has several names: relative and absolute ones, and links.
  std::string canonicalName(const CheckElement& file) const {
    const fs::path path = fs::u8path(m_directory) / fs::u8path(file.get("value"));
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(path, failed);
    return (failed ? path.lexically_normal() : canonical).u8string();
  }

  void checkSharedFiles() {
    std::map<std::string, std::vector<CheckElement>> files;  // the appenders that write to them
    for (const CheckElement& appender : m_document.elements("appender")) {
      const CheckElement file = appender.param("File");
      if (writesFile(appender) && !file.isNull() &&
          m_document.appender(appender.get("name")) == appender) {
        files[canonicalName(file)].push_back(appender);
      }
    }
    for (const auto& [name, appenders] : files) {
      checkSharing(appenders);
      const std::string beginning = name + ".";
      for (auto other = files.lower_bound(beginning);
           other != files.end() && other->first.compare(0, beginning.size(), beginning) == 0;
           ++other) {
        checkBackups(appenders, other->first.substr(beginning.size()), other->second);
      }
    }
  }

  /// Appenders of one file.
  void checkSharing(const std::vector<CheckElement>& appenders) {
    const bool isHarmful =
        std::any_of(appenders.begin(), appenders.end(), [](const CheckElement& appender) {
          return isRolling(appender) ||
                 CheckWords::lower(appender.param("Append").get("value")) == "false";
        });
    for (std::size_t i = 1; i < appenders.size(); ++i) {
      warnIf(isHarmful || takeTheSameEvents(appenders[0], appenders[i]), "shared-file",
             appenders[i].param("File"), "value",
             isHarmful
                 ? "the appender \"{}\" writes to the same file, and one of them empties or "
                   "renames it under the other"
                 : "the appender \"{}\" writes to the same file, and a logger refers to both, "
                   "so that its events are in it twice",
             "a file of its own, or one appender for both", {appenders[0].get("name")});
    }
  }

  /// Appenders of a file, and others whose file has a longer name by a dot and that end.
  void checkBackups(const std::vector<CheckElement>& appenders, const std::string& end,
                    const std::vector<CheckElement>& others) {
    const auto roller =
        std::find_if(appenders.begin(), appenders.end(),
                     [&](const CheckElement& appender) { return makesBackup(appender, end); });
    for (std::size_t i = 0; roller != appenders.end() && i < others.size(); ++i) {
      warn("shared-file", others[i].param("File"), "value",
           "the appender \"{}\" renames its full file to this name, and removes what is there",
           "a name that no backup gets", {roller->get("name")});
    }
  }

  const std::string m_directory;
};

}  // namespace

void CheckRules::checkFiles(const std::string& directory, CheckFindings& findings) {
  FileRules(directory, findings).checkAll();
}
