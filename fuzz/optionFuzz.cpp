// Texts of options, one a line: truth values, levels, numbers, facilities, date formats. Each
// answer is compared with one that is found in another way.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGOptionConverter.h"
#include "layouts/LOGDateLayout.h"
#include "net/LOGSyslogAppender.h"
#include "platform/ZEBUtConvert.h"
#include "support/Expect.h"
#include "support/FreshHierarchy.h"
#include "support/FuzzInput.h"

namespace {

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return text;
}

/// The level of that name, null if there is none.
LOGLevel* levelNamed(const std::string& name) {
  for (const int rank :
       {LOGLevel::ALL_RANK, LOGLevel::DEBUG_RANK, LOGLevel::INFO_RANK, LOGLevel::WARN_RANK,
        LOGLevel::ERROR_RANK, LOGLevel::FATAL_RANK, LOGLevel::OFF_RANK}) {
    LOGLevel* const level = LOGLevel::toLevel(rank);
    if (upper(name) == level->toString()) {
      return level;
    }
  }
  return nullptr;
}

LOGLevel* orElse(LOGLevel* level, LOGLevel* other) { return level == nullptr ? other : level; }

LOGLevel* expectedOption(const std::string& text, LOGLevel* byDefault) {
  const std::size_t hash = text.rfind('#');
  if (text.empty()) {
    return byDefault;
  }
  if (upper(text.substr(0, hash)) == "NULL") {
    return nullptr;
  }
  if (hash == std::string::npos) {
    return orElse(levelNamed(text), byDefault);
  }
  return text.substr(hash + 1) == "LOGLevel"
             ? orElse(levelNamed(text.substr(0, hash)), LOGLevel::toLevel(LOGLevel::DEBUG_RANK))
             : nullptr;
}

void tryLevel(const I18NString& value) {
  const std::string text = value.toStdString();
  expect(
      LOGLevel::toLevel(value) == orElse(levelNamed(text), LOGLevel::toLevel(LOGLevel::DEBUG_RANK)),
      "a level is found by its name, or is DEBUG");
  LOGLevel* const fatal = LOGLevel::toLevel(LOGLevel::FATAL_RANK);
  expect(LOGOptionConverter::toLevel(value, fatal) == expectedOption(text, fatal),
         "an option's level is the one that its parts say");
}

void tryBoolean(const I18NString& value) {
  constexpr int BY_DEFAULT = 7;
  const std::string word = upper(value.toStdString());
  expect(LOGOptionConverter::toBoolean(value, BY_DEFAULT) == (word == "TRUE"    ? 1
                                                              : word == "FALSE" ? 0
                                                                                : BY_DEFAULT),
         "true and false, or the default");
}

std::int64_t expectedNumber(const std::string& text) {
  constexpr std::int64_t BEYOND = std::int64_t{1} << 40;
  std::size_t i = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool isNegative = i < text.size() && text[i] == '-';
  i += isNegative || (i < text.size() && text[i] == '+') ? 1 : 0;
  std::int64_t number = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    number = std::min(number * 10 + (text[i] - '0'), BEYOND);
  }
  using Limits = std::numeric_limits<std::int32_t>;
  return std::clamp<std::int64_t>(isNegative ? -number : number, Limits::min(), Limits::max());
}

void tryNumber(const I18NString& value) {
  const std::int32_t number = ZEBUtConvert::toInt(value);
  expect(number == expectedNumber(value.toStdString()), "the number that a text begins with");
  expect(ZEBUtConvert::toInt(ZEBUtConvert::handleCvt(number)) == number,
         "a number becomes a text and comes back");
}

void tryFacility(const I18NString& value) {
  const int code = LOGSyslogAppender::getFacility(value);
  if (code != -1) {
    const std::string name = LOGSyslogAppender::getFacilityString(code).toStdString();
    expect(upper(name) == upper(value.toStdString()), "a facility has the name it is found by");
  }
}

void tryDateFormat(const I18NString& value, LOGLoggingEvent& event) {
  const std::string name = upper(value.toStdString());
  LOGDateLayout layout;
  layout.setDateFormat(value);
  I18NString text = "before";
  layout.dateFormat(text, &event);
  if (value == "NULL") {
    expect(text == "before", "no format writes nothing");
    return;
  }
  const bool isKnown = name == "RELATIVE" || name == "ABSOLUTE" || name == "DATE" ||
                       name == "ISO8601" || value == "HH:mm:ss,SSS" ||
                       value == "dd MMM yyyy HH:mm:ss,SSS";
  expect(isKnown ? text.length() > 1 && text.at(text.length() - 1) == u' ' : text == " ",
         "a format that is not known writes only the blank");
  layout.setOption(value, value);
  layout.setTimeZone(value);
  layout.activateOptions();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static FreshHierarchy& hierarchy = *new FreshHierarchy;
  static LOGLogger* const logger = hierarchy.get().getLogger("option");
  for (FuzzInput input(data, size); !input.rest().empty();) {
    const I18NString value = I18NString::fromUtf8(input.line());
    LOGLoggingEvent event(logger, LOGLevel::toLevel(LOGLevel::INFO_RANK), LOGMessageText{value});
    tryLevel(value);
    tryBoolean(value);
    tryNumber(value);
    tryFacility(value);
    tryDateFormat(value, event);
  }
  return 0;
}
