#ifndef FUZZ_SUPPORT_FUZZINPUT_H
#define FUZZ_SUPPORT_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Takes the fuzzer's bytes apart from the front, in a way that leaves seeds readable as text
/// files.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size)
      : m_rest(reinterpret_cast<const char*>(data), size) {}

  /// What comes before the next line feed, which is taken too.
  std::string_view line() {
    const std::size_t end = m_rest.find('\n');
    const std::string_view taken = m_rest.substr(0, end);
    m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
    return taken;
  }
  /// The next byte, 0 at the end.
  unsigned int byte() {
    if (m_rest.empty()) {
      return 0;
    }
    const auto taken = static_cast<unsigned char>(m_rest.front());
    m_rest.remove_prefix(1);
    return taken;
  }
  std::string_view rest() const { return m_rest; }

 private:
  std::string_view m_rest;
};

#endif
