#include "support/OpenReader.h"

std::string OpenReader::readOn() {
  std::string text;
  char buffer[4096];
  for (long size = 0; (size = readSome(buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(size));
  }
  return text;
}

#ifdef _WIN32
#include <windows.h>

#include <filesystem>

OpenReader::OpenReader(const std::string& fileName)
    : m_file(reinterpret_cast<std::intptr_t>(
          CreateFileW(std::filesystem::u8path(fileName).c_str(), GENERIC_READ,
                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, 0, nullptr))) {}

OpenReader::~OpenReader() {
  if (isOpen()) {
    CloseHandle(reinterpret_cast<HANDLE>(m_file));
  }
}

long OpenReader::readSome(char* buffer, std::size_t size) {
  DWORD got = 0;
  return ReadFile(reinterpret_cast<HANDLE>(m_file), buffer, static_cast<DWORD>(size), &got,
                  nullptr) != 0
             ? static_cast<long>(got)
             : -1;
}

#else
#include <fcntl.h>
#include <unistd.h>

OpenReader::OpenReader(const std::string& fileName)
    : m_file(open(fileName.c_str(), O_RDONLY | O_CLOEXEC)) {}

OpenReader::~OpenReader() {
  if (isOpen()) {
    close(static_cast<int>(m_file));
  }
}

long OpenReader::readSome(char* buffer, std::size_t size) {
  return read(static_cast<int>(m_file), buffer, size);
}

#endif
