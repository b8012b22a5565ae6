#ifndef FUZZ_POSIX_ICONV_H
#define FUZZ_POSIX_ICONV_H

#include <cstddef>
#include <string>
#include <string_view>

/// Converts between encodings with the system's own converter, to compare the library's with.
class Iconv {
 public:
  /// `to` and `from` are names of encodings as iconv_open takes them.
  Iconv(const char* to, const char* from);
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;
  ~Iconv();

  struct Result {
    std::string bytes;
    /// How many bytes were taken: all, or up to the first sequence that could not be converted.
    std::size_t taken;
  };
  Result convert(std::string_view bytes) const;

 private:
  void* m_descriptor;
};

#endif
