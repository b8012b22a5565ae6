#include "tools/PageCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>

#include "layouts/LOGHTMLLayout.h"
#include "tools/CommandSupport.h"

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
  4  the rows cannot be read, are no such rows, or have other columns
  5  the page cannot be written)";

// How the lines of a row begin; what was logged has no such brackets in the rows any more.
constexpr std::string_view ROW_BEGIN = "<tr>";
constexpr std::string_view CELL_BEGIN = "<td";
constexpr std::string_view ROW_END = "</tr>";
constexpr int CELLS_WITH_LOCATION = 6;

/// Far beyond any message that can be looked at in a page.
constexpr std::size_t LONGEST_LINE = std::size_t{64} << 20;

bool beginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

bool isBlank(std::string_view line) { return line.find_first_not_of("\r\n") == line.npos; }

/// As std::getline(), but after a line longer than LONGEST_LINE, as a device without end may have,
/// the stream counts as unreadable.
bool readLine(std::istream& rows, std::string& line) {
  char piece[65536];
  line.clear();
  for (;;) {
    rows.getline(piece, sizeof piece);
    line.append(piece, static_cast<std::size_t>(rows.gcount()));
    if (line.size() > LONGEST_LINE) {
      rows.setstate(std::ios::badbit);
      return true;
    }
    if (rows.eof() || rows.bad()) {
      return !line.empty();
    }
    if (!rows.fail()) {
      line.pop_back();  // the line's end, which was counted
      return true;
    }
    rows.clear();  // there is more of this line
  }
}

/// The stream from where it stands to the end of the first row, or to where it is seen to be none.
std::string readFirstRow(std::istream& rows) {
  std::string text;
  bool hasBegun = false;
  for (std::string line; text.size() <= LONGEST_LINE && readLine(rows, line);) {
    text += line + "\n";
    hasBegun = hasBegun || beginsWith(line, ROW_BEGIN);
    if (beginsWith(line, ROW_END) || (!hasBegun && !isBlank(line))) {
      break;
    }
  }
  return text;
}

int countCells(const std::string& row) {
  int cells = 0;
  for (std::size_t begin = 0; begin < row.size(); begin = row.find('\n', begin) + 1) {
    cells += beginsWith(std::string_view(row).substr(begin), CELL_BEGIN) ? 1 : 0;
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

}  // namespace

PageCommand::PageCommand(CLI::App& app) {
  CLI::App* const command =
      app.add_subcommand("page", "Make a complete page of the HTML rows that were logged");
  command->add_option("--title", m_title, "The title of the page")->type_name("TEXT");
  command->add_flag("--location-info", m_locationInfo, "The rows have the column File:Line");
  command->add_option("--output", m_output, "Where to write the page; without it, standard output")
      ->type_name("PAGE");
  command->add_option("FILE", m_input, "The file with the rows; - is standard input")
      ->required()
      ->type_name("");
  command->footer(NOTES);
}

int PageCommand::run() const {
  if (m_input == STANDARD_INPUT) {
    return makePageOf(std::cin);
  }
  std::ifstream rows;
  return CommandSupport::openToRead(rows, m_input, "input file") ? makePageOf(rows) : BAD_INPUT;
}

int PageCommand::makePageOf(std::istream& rows) const {
  const std::string firstRow = readFirstRow(rows);
  if (const std::string complaint = complaintAbout(firstRow); !complaint.empty()) {
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
  if (rows.bad()) {
    CommandSupport::say("cannot read on in the input");
    return BAD_INPUT;
  }
  return 0;
}

/// Says why these rows make no page; empty when they do. No rows at all make an empty table.
std::string PageCommand::complaintAbout(const std::string& firstRow) const {
  const std::size_t begin = std::min(firstRow.find_first_not_of("\r\n"), firstRow.size());
  if (isBlank(firstRow)) {
    return "";
  }
  const std::string input = "the input file '" + m_input + "'";
  if (!beginsWith(std::string_view(firstRow).substr(begin), ROW_BEGIN)) {
    return input + " does not begin with a row of the layout LOGHTMLLayout";
  }
  const bool hasLocation = countCells(firstRow) == CELLS_WITH_LOCATION;
  if (hasLocation != m_locationInfo) {
    return input + (hasLocation ? " has the column File:Line: add --location-info"
                                : " has no column File:Line: leave out --location-info");
  }
  return "";
}

bool PageCommand::writePage(std::ostream& page, const std::string& firstRow,
                            std::istream& rows) const {
  LOGHTMLLayout layout;
  layout.setLocationInfo(m_locationInfo ? 1 : 0);
  if (!m_title.empty()) {
    layout.setTitle(I18NString::fromUtf8(escaped(m_title)));
  }
  page << referring(layout.getHeader().toStdString()) << referring(firstRow);
  for (std::string line; page && readLine(rows, line);) {
    page << referring(line) << '\n';
  }
  page << layout.getFooter() << std::flush;
  return page.good();
}
