#include "tools/LineReader.h"

bool LineReader::next() {
  if (!std::getline(m_in, m_line)) {
    return false;
  }
  if (!m_line.empty() && m_line.back() == '\r') {
    m_line.pop_back();
  }
  return true;
}
