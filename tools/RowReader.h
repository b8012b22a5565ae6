#ifndef TOOLS_ROWREADER_H
#define TOOLS_ROWREADER_H

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

/// Reads the lines of HTML rows, notices rows that are not whole, and keeps no more of the input
/// than a row may have.
class RowReader {
 public:
  /// The most bytes of a row; a browser shows no longer one.
  static constexpr std::size_t LONGEST = 16UL * 1024 * 1024;
  static constexpr const char* ROW_BEGIN = "<tr>";

  /// The stream must outlive the reader.
  explicit RowReader(std::istream& in) : m_in(in) {}

  /// Moves to the next line. Returns false at the end of the stream, when reading failed, and after
  /// a row that is too long.
  bool next();
  /// The line without its line feed; of a row that is too long, what was read of it.
  const std::string& line() const { return m_line; }
  /// Whether a row ends with the line.
  bool endsRow() const;
  /// What is wrong with the rows so far, for a sentence that begins with the input's name; empty
  /// when nothing is.
  std::string complaint() const;
  bool failed() const { return m_in.bad(); }

 private:
  void readLine();

  std::istream& m_in;
  std::vector<char> m_piece = std::vector<char>(64UL * 1024);
  std::string m_line;
  std::size_t m_size = 0;  // of the lines since the last row ended
  bool m_isInRow = false;
  bool m_hasPart = false;  // a row without its end, or text that is in no row
};

#endif
