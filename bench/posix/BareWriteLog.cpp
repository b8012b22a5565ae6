// The calls of the operating system that BareWriteLog measures.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "bench/BareWriteLog.h"

void BareWriteLog::open(const std::filesystem::path& file) {
  m_file = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (m_file < 0) {
    throw std::system_error(errno, std::generic_category(), "open");
  }
}

BareWriteLog::~BareWriteLog() {
  if (m_file >= 0) {
    ::close(m_file);
  }
}

// A short write shows as a line that is missing at the end.
void BareWriteLog::log() {
  if (::write(m_file, m_line.data(), m_line.size()) < 0) {
    throw std::system_error(errno, std::generic_category(), "write");
  }
}

void BareWriteLog::finish() {}
