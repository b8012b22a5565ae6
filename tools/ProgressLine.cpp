#include "tools/ProgressLine.h"

#include <iostream>
#include <string>

#include "platform/ZEBUtTerminal.h"

ProgressLine::ProgressLine()
    : m_wanted(ZEBUtTerminal::isStandardError()), m_next(Clock::now() + std::chrono::seconds(1)) {}

void ProgressLine::show(std::uint64_t lines) {
  if (!m_wanted || lines == m_shown || Clock::now() < m_next) {
    return;
  }
  const std::string text = "log4zeb: " + std::to_string(lines) + " lines read so far";
  std::cerr << '\r' + text;
  m_width = text.size();
  m_shown = lines;
  m_next = Clock::now() + std::chrono::milliseconds(200);
}

void ProgressLine::clear() {
  if (m_width != 0) {
    std::cerr << '\r' + std::string(m_width, ' ') + '\r';
    m_width = 0;
  }
}
