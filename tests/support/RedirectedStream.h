#ifndef TESTS_SUPPORT_REDIRECTEDSTREAM_H
#define TESTS_SUPPORT_REDIRECTEDSTREAM_H

#include <cstdint>
#include <string>

/// A standard stream of the process, numbered as in ZEBFmFile, led into a file while the object
/// lives.
class RedirectedStream {
 public:
  RedirectedStream(int stream, const std::string& fileName);
  RedirectedStream(const RedirectedStream&) = delete;
  RedirectedStream& operator=(const RedirectedStream&) = delete;
  ~RedirectedStream();

  /// Writes to the stream as the program itself does. Returns whether that succeeded.
  bool write(const std::string& text);

 private:
  int m_stream;
  std::intptr_t m_saved;
  std::intptr_t m_file;
};

#endif
