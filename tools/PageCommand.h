#ifndef TOOLS_PAGECOMMAND_H
#define TOOLS_PAGECOMMAND_H

#include <iosfwd>
#include <string>

class RowReader;

namespace CLI {
class App;
}

/// The command `log4zeb page`: makes a complete page of the HTML rows that an appender wrote.
class PageCommand {
 public:
  // What the command exits with, next to 0.
  static constexpr int BAD_INPUT = 4;
  static constexpr int BAD_OUTPUT = 5;

  /// Declares the subcommand and its options; `app` must not outlive this object.
  explicit PageCommand(CLI::App& app);
  PageCommand(const PageCommand&) = delete;
  PageCommand& operator=(const PageCommand&) = delete;

  /// Does what the parsed options say and returns the exit code.
  int run() const;

 private:
  int makePageOf(std::istream& in) const;
  std::string complaintAbout(const std::string& firstRow, const RowReader& rows) const;
  bool writePage(std::ostream& page, const std::string& firstRow, RowReader& rows) const;

  std::string m_input;
  std::string m_output;
  std::string m_title;
  bool m_locationInfo = false;
};

#endif
