#include "platform/ZEBUtConvert.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace {

/// A number in decimal, on the stack.
template <typename Integer>
class Decimal {
 public:
  explicit Decimal(Integer value)
      : m_size(static_cast<std::size_t>(
            std::to_chars(std::begin(m_digits), std::end(m_digits), value).ptr - m_digits)) {}
  std::string_view text() const { return {m_digits, m_size}; }

 private:
  char m_digits[std::numeric_limits<Integer>::digits10 + 2];
  std::size_t m_size;
};

template <typename Integer>
I18NString decimal(Integer value) {
  I18NString result;
  result.appendAscii(Decimal<Integer>(value).text());
  return result;
}

}  // namespace

I18NString ZEBUtConvert::handleCvt(std::int64_t value) { return decimal(value); }

I18NString ZEBUtConvert::handleCvt(std::uint64_t value) { return decimal(value); }

I18NString ZEBUtConvert::padded(std::int64_t value, int digits) {
  I18NString result;
  appendPadded(result, value, digits);
  return result;
}

void ZEBUtConvert::appendPadded(I18NString& text, std::int64_t value, int digits) {
  const Decimal<std::int64_t> decimal(value);
  const auto width = static_cast<std::size_t>(digits);
  if (decimal.text().size() < width) {
    text.append(width - decimal.text().size(), '0');
  }
  text.appendAscii(decimal.text());
}

std::int32_t ZEBUtConvert::toInt(const I18NString& text) {
  const long long value = std::strtoll(text.toStdString().c_str(), nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(
      value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}
