#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

#include "layouts/LOGHTMLLayout.h"
#include "tools/CommandSupport.h"
#include "tools/Subcommand.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* STANDARD_INPUT = "-";

constexpr const char* NOTES =
    R"(FILE is what an appender with the layout LOGHTMLLayout wrote. Characters beyond ASCII are
written as references, so that the page looks the same however it is served.

Exit codes:
  0  the page is complete
  1  unexpected failure, such as no memory
  2  bad arguments
  4  the rows cannot be read, are no such rows, have other columns, or one is not whole
  5  the page cannot be written)";

constexpr std::string_view CELL_BEGIN = "<td";
constexpr int CELLS_WITH_LOCATION = 6;

/// Reads the lines of HTML rows, notices rows that are not whole, and keeps no more of the input
/// than a row may have.
class RowReader {
 public:
  /// The most bytes of a row; a browser shows no longer one.
  static constexpr std::size_t LONGEST = 16UL * 1024 * 1024;
  static constexpr const char* ROW_BEGIN = "<tr>";

  explicit RowReader(std::istream& in) : m_in(in) {}

  /// Moves to the next line. Returns false at the end of the stream, when reading failed, and after
  /// a row that is too long.
  bool next() {
    if (m_size > LONGEST) {
      return false;
    }
    readLine();
    if (m_line.empty() && !m_in) {
      return false;
    }
    m_size += m_line.size() + 1;
    // What was logged has no such brackets in the rows any more.
    const bool begins = m_line.rfind(ROW_BEGIN, 0) == 0;
    const bool isBlank = m_line.find_first_not_of('\r') == std::string::npos;
    m_hasPart = m_hasPart || (m_isInRow ? begins : !begins && !isBlank);
    m_isInRow = (m_isInRow || begins) && !endsRow();
    m_size = endsRow() ? 0 : m_size;
    return true;
  }
  /// The line without its line feed; of a row that is too long, what was read of it.
  const std::string& line() const { return m_line; }
  /// Whether a row ends with the line.
  bool endsRow() const {
    const std::string end = "</tr>";
    const std::size_t at = m_line.rfind(end);
    return at != std::string::npos &&
           m_line.find_first_not_of('\r', at + end.size()) == std::string::npos;
  }
  /// What is wrong with the rows so far, for a sentence that begins with the input's name; empty
  /// when nothing is.
  std::string complaint() const {
    return m_size > LONGEST         ? "has a row of more than 16 MiB"
           : m_hasPart || m_isInRow ? "has a row that is not whole"
                                    : "";
  }
  bool failed() const { return m_in.bad(); }

 private:
  void readLine() {
    m_line.clear();
    for (bool isWhole = false; !isWhole && m_in && m_size + m_line.size() <= LONGEST;) {
      m_in.getline(m_piece.data(), static_cast<std::streamsize>(m_piece.size()));
      const auto count = static_cast<std::size_t>(m_in.gcount());
      isWhole = m_in.good();
      m_line.append(m_piece.data(), count - (isWhole ? 1 : 0));  // it counts the line feed
      if (m_in.rdstate() == std::ios::failbit) {
        m_in.clear();  // the piece is full
      }
    }
  }

  std::istream& m_in;
  std::vector<char> m_piece = std::vector<char>(64UL * 1024);
  std::string m_line;
  std::size_t m_size = 0;  // of the lines since the last row ended
  bool m_isInRow = false;
  bool m_hasPart = false;  // a row without its end, or text that is in no row
};

bool beginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

/// What there is up to the end of the first row, or to the end where there is none.
std::string readFirstRow(RowReader& rows) {
  std::string text;
  while (rows.next()) {
    text += rows.line() + "\n";
    if (rows.endsRow()) {
      break;
    }
  }
  return text;
}

int countCells(const std::string& row) {
  int cells = 0;
  for (std::size_t begin = 0; begin < row.size(); begin = row.find('\n', begin) + 1) {
    const std::string_view line = std::string_view(row).substr(begin);
    cells = beginsWith(line, RowReader::ROW_BEGIN) ? 0 : cells;  // of one that is cut off
    cells += beginsWith(line, CELL_BEGIN) ? 1 : 0;
  }
  return cells;
}

/// The text in ASCII, with a reference for every character beyond; what is no UTF-8 becomes the
/// replacement character.
std::string referring(const std::string& text) {
  if (std::all_of(text.begin(), text.end(),
                  [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    return text;
  }
  const std::u16string units = I18NString::fromUtf8(text).toUtf16();
  std::string ascii;
  for (std::size_t i = 0; i < units.size(); ++i) {
    std::uint32_t character = units[i];
    if (character < 0x80) {
      ascii += static_cast<char>(character);
      continue;
    }
    if ((character & 0xFC00) == 0xD800 && i + 1 < units.size()) {
      character = 0x10000 + ((character - 0xD800) << 10) + (units[++i] - 0xDC00u);
    }
    ascii += "&#" + std::to_string(character) + ";";
  }
  return ascii;
}

/// Plain text as markup.
std::string escaped(const std::string& text) {
  std::string markup;
  for (const char c : text) {
    markup += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  }
  return markup;
}

class PageCommand : public Subcommand {
 public:
  explicit PageCommand(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("page", "Make a complete page of the HTML rows that were logged");
    command->add_option("--title", m_title, "The title of the page")->type_name("TEXT");
    command->add_flag("--location-info", m_locationInfo, "The rows have the column File:Line");
    command
        ->add_option("--output", m_output, "Where to write the page; without it, standard output")
        ->type_name("PAGE");
    command->add_option("FILE", m_input, "The file with the rows; - is standard input")
        ->required()
        ->type_name("");
    command->footer(NOTES);
  }

  int run() const override {
    if (m_input == STANDARD_INPUT) {
      return makePageOf(std::cin);
    }
    std::ifstream rows;
    return CommandSupport::openToRead(rows, m_input, "input file") ? makePageOf(rows) : BAD_INPUT;
  }

 private:
  int makePageOf(std::istream& in) const {
    RowReader rows(in);
    const std::string firstRow = readFirstRow(rows);
    if (const std::string complaint = complaintAbout(firstRow, rows); !complaint.empty()) {
      CommandSupport::say(complaint);
      return BAD_INPUT;
    }
    std::ofstream file;
    if (!m_output.empty()) {
      std::error_code absent;
      if (fs::equivalent(fs::u8path(m_input), fs::u8path(m_output), absent)) {
        CommandSupport::say("the page cannot be written to the file with the rows, '" + m_output +
                            "'");
        return BAD_OUTPUT;
      }
      errno = 0;
      file.open(fs::u8path(m_output), std::ios::out | std::ios::binary | std::ios::trunc);
    }
    if (!writePage(m_output.empty() ? std::cout : file, firstRow, rows)) {
      CommandSupport::say("cannot write the page" +
                          (m_output.empty() ? std::string() : " '" + m_output + "'") +
                          CommandSupport::reason(errno));
      return BAD_OUTPUT;
    }
    if (rows.failed()) {
      CommandSupport::say("cannot read on in the input");
      return BAD_INPUT;
    }
    if (const std::string complaint = rows.complaint(); !complaint.empty()) {
      CommandSupport::say("the input file '" + m_input + "' " + complaint +
                          ": the page is not complete");
      return BAD_INPUT;
    }
    return 0;
  }

  /// Says why these rows make no page; empty when they do. No rows at all make an empty table.
  std::string complaintAbout(const std::string& firstRow, const RowReader& rows) const {
    const std::size_t begin = std::min(firstRow.find_first_not_of("\r\n"), firstRow.size());
    if (begin == firstRow.size()) {
      return "";
    }
    const std::string input = "the input file '" + m_input + "'";
    if (!beginsWith(std::string_view(firstRow).substr(begin), RowReader::ROW_BEGIN)) {
      return input + " does not begin with a row of the layout LOGHTMLLayout";
    }
    const bool hasLocation = countCells(firstRow) == CELLS_WITH_LOCATION;
    if (hasLocation != m_locationInfo && rows.endsRow()) {
      return input + (hasLocation ? " has the column File:Line: add --location-info"
                                  : " has no column File:Line: leave out --location-info");
    }
    return "";
  }

  bool writePage(std::ostream& page, const std::string& firstRow, RowReader& rows) const {
    LOGHTMLLayout layout;
    layout.setLocationInfo(m_locationInfo ? 1 : 0);
    if (!m_title.empty()) {
      layout.setTitle(I18NString::fromUtf8(escaped(m_title)));
    }
    page << referring(layout.getHeader().toStdString()) << referring(firstRow);
    while (page && rows.next()) {
      page << referring(rows.line()) << '\n';
    }
    page << layout.getFooter() << std::flush;
    return page.good();
  }

  std::string m_input;
  std::string m_output;
  std::string m_title;
  bool m_locationInfo = false;
};

}  // namespace

std::unique_ptr<Subcommand> Subcommand::page(CLI::App& app) {
  return std::make_unique<PageCommand>(app);
}
