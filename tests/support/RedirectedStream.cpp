#include "support/RedirectedStream.h"

#include <filesystem>
#include <stdexcept>

#ifdef _WIN32
#include <windows.h>

namespace {

DWORD numberOf(int stream) { return stream == 2 ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE; }

HANDLE handleOf(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

}  // namespace

RedirectedStream::RedirectedStream(int stream, const std::string& fileName)
    : m_stream(stream),
      m_saved(reinterpret_cast<std::intptr_t>(GetStdHandle(numberOf(stream)))),
      m_file(reinterpret_cast<std::intptr_t>(
          CreateFileW(std::filesystem::u8path(fileName).c_str(), GENERIC_WRITE,
                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr))) {
  if (handleOf(m_file) == INVALID_HANDLE_VALUE ||
      SetStdHandle(numberOf(stream), handleOf(m_file)) == 0) {
    throw std::runtime_error("cannot redirect to " + fileName);
  }
}

RedirectedStream::~RedirectedStream() {
  SetStdHandle(numberOf(m_stream), handleOf(m_saved));
  CloseHandle(handleOf(m_file));
}

bool RedirectedStream::write(const std::string& text) {
  DWORD written = 0;
  return WriteFile(GetStdHandle(numberOf(m_stream)), text.data(), static_cast<DWORD>(text.size()),
                   &written, nullptr) != 0 &&
         written == text.size();
}

#else
#include <fcntl.h>
#include <unistd.h>

RedirectedStream::RedirectedStream(int stream, const std::string& fileName)
    : m_stream(stream),
      m_saved(dup(stream)),
      m_file(open(fileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600)) {
  if (dup2(static_cast<int>(m_file), stream) != stream) {
    throw std::runtime_error("cannot redirect to " + fileName);
  }
}

RedirectedStream::~RedirectedStream() {
  dup2(static_cast<int>(m_saved), m_stream);
  close(static_cast<int>(m_saved));
  close(static_cast<int>(m_file));
}

bool RedirectedStream::write(const std::string& text) {
  return ::write(m_stream, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

#endif
