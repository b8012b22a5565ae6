#include "tools/RowReader.h"

bool RowReader::next() {
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

void RowReader::readLine() {
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

bool RowReader::endsRow() const {
  constexpr const char* ROW_END = "</tr>";
  const std::size_t end = m_line.rfind(ROW_END);
  return end != std::string::npos &&
         m_line.find_first_not_of('\r', end + std::string(ROW_END).size()) == std::string::npos;
}

std::string RowReader::complaint() const {
  return m_size > LONGEST         ? "has a row of more than 16 MiB"
         : m_hasPart || m_isInRow ? "has a row that is not whole"
                                  : "";
}
