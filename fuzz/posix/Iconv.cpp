#include "posix/Iconv.h"

#include <iconv.h>

#include <cerrno>

#include "support/Expect.h"

Iconv::Iconv(const char* to, const char* from) : m_descriptor(iconv_open(to, from)) {
  expect(m_descriptor != reinterpret_cast<iconv_t>(-1), "the system knows the encodings");
}

Iconv::~Iconv() { iconv_close(m_descriptor); }

Iconv::Result Iconv::convert(std::string_view bytes) const {
  constexpr std::size_t LARGEST_GROWTH = 4;
  iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
  std::string out(LARGEST_GROWTH * bytes.size() + LARGEST_GROWTH, '\0');
  char* from = const_cast<char*>(bytes.data());  // the published interface; nothing is written
  char* to = out.data();
  std::size_t left = bytes.size();
  std::size_t room = out.size();
  const std::size_t status = iconv(m_descriptor, &from, &left, &to, &room);
  const bool failed = status == static_cast<std::size_t>(-1);
  expect(!failed || errno != E2BIG, "there is room for every conversion");
  out.resize(out.size() - room);
  return {out, bytes.size() - left};
}
