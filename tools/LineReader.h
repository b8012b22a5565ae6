#ifndef TOOLS_LINEREADER_H
#define TOOLS_LINEREADER_H

#include <istream>
#include <string>
#include <string_view>

/// Cuts a stream into lines of any length. A line ends with LF or CR LF, the last one also with the
/// stream; every other byte belongs to the line, zeros too.
class LineReader {
 public:
  /// The stream must outlive the reader.
  explicit LineReader(std::istream& in) : m_in(in) {}

  /// Moves to the next line. Returns false at the end of the stream or when reading failed.
  bool next() {
    const bool isThere = static_cast<bool>(std::getline(m_in, m_line));
    if (isThere && !m_line.empty() && m_line.back() == '\r') {
      m_line.pop_back();
    }
    return isThere;
  }
  /// The line without its end; valid until next().
  std::string_view line() const noexcept { return m_line; }
  /// After next() returned false: whether that was for another reason than the end of the stream.
  bool failed() const { return m_in.bad() || !m_in.eof(); }

 private:
  std::istream& m_in;
  std::string m_line;
};

#endif
