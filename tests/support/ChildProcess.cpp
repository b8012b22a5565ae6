#include "support/ChildProcess.h"

#include <atomic>

#include "support/Workplace.h"

std::string ChildProcess::nextErrorFile() {
  static std::atomic<int> number{0};
  return "standard-error-" + std::to_string(++number);
}

const std::string& ChildProcess::receive(std::size_t bytes) {
  char buffer[4096];
  while (m_received.size() < bytes) {
    const long got = readOutput(buffer, sizeof buffer);
    if (got <= 0) {
      break;
    }
    m_received.append(buffer, static_cast<std::size_t>(got));
  }
  return m_received;
}

std::string ChildProcess::errors() const { return Workplace::read(m_errorFile); }
