#ifndef TESTS_SUPPORT_OPENREADER_H
#define TESTS_SUPPORT_OPENREADER_H

#include <cstdint>
#include <string>

/// Has a file open for reading, in a way that lets others write, rename and remove it.
class OpenReader {
 public:
  explicit OpenReader(const std::string& fileName);
  OpenReader(const OpenReader&) = delete;
  OpenReader& operator=(const OpenReader&) = delete;
  ~OpenReader();

  bool isOpen() const { return m_file != NONE; }
  /// What has come since the last call.
  std::string readOn();

 private:
  static constexpr std::intptr_t NONE = -1;
  long readSome(char* buffer, std::size_t size);

  std::intptr_t m_file;
};

#endif
