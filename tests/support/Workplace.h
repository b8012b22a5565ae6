#ifndef TESTS_SUPPORT_WORKPLACE_H
#define TESTS_SUPPORT_WORKPLACE_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// A fresh directory that is the process's working directory while the object lives, with the
/// library's diagnostics switched on and written to a file in it.
class Workplace {
 public:
  Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  /// Shuts the library down and removes the directory.
  ~Workplace();

  /// The lines of the diagnostics so far, without their line ends.
  static std::vector<std::string> diagnostics();
  /// How many of them are errors, warnings or debugging notes of exactly that text.
  static std::ptrdiff_t errors(const std::string& text) {
    return diagnosticsEqual("log4zeb:ERROR " + text);
  }
  static std::ptrdiff_t warnings(const std::string& text) {
    return diagnosticsEqual("log4zeb:WARN " + text);
  }
  static std::ptrdiff_t debugs(const std::string& text) {
    return diagnosticsEqual("log4zeb: " + text);
  }
  /// How many of them are exactly, or contain, the text.
  static std::ptrdiff_t diagnosticsEqual(const std::string& line);
  static std::ptrdiff_t noted(const std::string& part);
  static void clearDiagnostics();

  static std::string read(const std::string& fileName);
  /// The lines of a file; every one must end with CR LF, otherwise a line saying so is added.
  static std::vector<std::string> lines(const std::string& fileName);
  static void write(const std::string& fileName, const std::string& text);
  /// Writes a document with the given children of the root element and configures the library from
  /// it; returns what the configurator returned.
  static int configure(const std::string& children, const std::string& rootAttributes = "");
  static constexpr const char* DOCUMENT = "test.xml";
  /// A file that can be opened, and whose disk is full.
  static constexpr const char* FULL_DISK = "/dev/full";

 private:
  std::filesystem::path m_before;
  std::filesystem::path m_directory;
};

#endif
