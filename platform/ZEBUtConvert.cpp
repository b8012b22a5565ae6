#include "platform/ZEBUtConvert.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace {

template <typename Integer>
I18NString decimal(Integer value) {
  char digits[std::numeric_limits<Integer>::digits10 + 2];
  const char* const end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  return I18NString::fromUtf8({digits, static_cast<std::size_t>(end - digits)});
}

}  // namespace

I18NString ZEBUtConvert::handleCvt(std::int64_t value) { return decimal(value); }

I18NString ZEBUtConvert::handleCvt(std::uint64_t value) { return decimal(value); }

I18NString ZEBUtConvert::padded(std::int64_t value, int digits) {
  const I18NString plain = handleCvt(value);
  const auto width = static_cast<std::size_t>(digits);
  I18NString result;
  if (plain.length() < width) {
    result.append(width - plain.length(), '0');
  }
  return result + plain;
}

std::int32_t ZEBUtConvert::toInt(const I18NString& text) {
  const long long value = std::strtoll(text.toStdString().c_str(), nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(
      value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}
