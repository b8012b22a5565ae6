#include "layouts/LOGPatternParser.h"

#include <atomic>
#include <limits>

#include "core/LOGLogLog.h"
#include "layouts/LOGBasicPatternConverter.h"
#include "layouts/LOGClassNamePatternConverter.h"
#include "layouts/LOGDatePatternConverter.h"
#include "layouts/LOGDateTimeDateFormat.h"
#include "layouts/LOGFormattingInfo.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGLiteralPatternConverter.h"
#include "layouts/LOGLocationPatternConverter.h"
#include "layouts/LOGLoggerPatternConverter.h"
#include "layouts/LOGMDCPatternConverter.h"
#include "layouts/LOGSimpleDateFormat.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"

namespace {

constexpr const char* SOURCE = "LOGPatternParser";

/// Parses write the class-wide formatting fields, so only one runs at a time.
ZEBThreadCriticalSection g_parseLock;

bool isDigit(const I18NString& ch) {
  return !(ch < LOGPatternParser::LITERAL_0) && !(LOGPatternParser::LITERAL_9 < ch);
}

/// The width with one more digit; it stops at the largest int.
void appendDigit(std::atomic<int>& width, const I18NString& digit) {
  constexpr int LARGEST = std::numeric_limits<int>::max();
  const int value = ZEBUtConvert::toInt(digit);
  const int before = width;
  width = before > (LARGEST - value) / 10 ? LARGEST : before * 10 + value;
}

std::unique_ptr<LOGDateFormat> dateFormatFor(const I18NString& option) {
  if (option == LOGAbsoluteTimeDateFormat::ISO8601_DATE_FORMAT) {
    return std::make_unique<LOGISODateFormat>();
  }
  if (option == LOGAbsoluteTimeDateFormat::ABS_TIME_DATE_FORMAT) {
    return std::make_unique<LOGAbsoluteTimeDateFormat>();
  }
  if (option == LOGAbsoluteTimeDateFormat::DATE_AND_TIME_DATE_FORMAT) {
    return std::make_unique<LOGDateTimeDateFormat>();
  }
  return std::make_unique<LOGSimpleDateFormat>(option);
}

}  // namespace

const I18NString LOGPatternParser::LITERAL_0 = "0";
const I18NString LOGPatternParser::LITERAL_9 = "9";

LOGPatternParser::LOGPatternParser(const I18NString& pattern)
    : m_patternLength(static_cast<int>(pattern.length())),
      m_formattingInfo(
          zebTranslate(SOURCE, __LINE__, [] { return std::make_unique<LOGFormattingInfo>(); })),
      m_pattern(pattern.toUtf16()),
      m_lastBrace(m_pattern.rfind(u'}')) {}

LOGPatternParser::~LOGPatternParser() = default;

LOGPatternConverter* LOGPatternParser::parse() {
  const ZEBThreadGuard guard(g_parseLock);
  return zebTranslate(SOURCE, __LINE__, [this] {
    while (m_i < m_patternLength) {
      const I18NString ch(&m_pattern[static_cast<std::size_t>(m_i)], 1);
      ++m_i;
      if (m_state == LITERAL_STATE) {
        parseLiteral(ch);
      } else {
        m_currentLiteral.append(ch);
        parseSpecifier(ch);
      }
    }
    if (!m_currentLiteral.isEmpty()) {
      addToList(new LOGLiteralPatternConverter(m_currentLiteral));
    }
    return m_head.release();
  });
}

void LOGPatternParser::parseLiteral(const I18NString& ch) {
  if (m_i == m_patternLength || ch.at(0) != u'%') {
    m_currentLiteral.append(ch);
    return;
  }
  switch (m_pattern[static_cast<std::size_t>(m_i)]) {
    case u'%':
      m_currentLiteral.append(1, '%');
      ++m_i;
      break;
    case u'n':
      m_currentLiteral += "\r\n";
      ++m_i;
      break;
    default:
      if (!m_currentLiteral.isEmpty()) {
        addToList(new LOGLiteralPatternConverter(m_currentLiteral));
      }
      m_currentLiteral = "%";
      m_state = CONVERTER_STATE;
      LOGFormattingInfo::reset();
  }
}

void LOGPatternParser::parseSpecifier(const I18NString& ch) {
  const bool digit = isDigit(ch);
  if (m_state == DOT_STATE) {
    // Without a maximum width the specifier is no specifier: what was read of it stays literal, and
    // nothing is reported. That is meant.
    if (digit) {
      LOGFormattingInfo::m_max = ZEBUtConvert::toInt(ch);
    }
    m_state = digit ? MAX_STATE : LITERAL_STATE;
  } else if (m_state == CONVERTER_STATE && ch.at(0) == u'-') {
    LOGFormattingInfo::m_leftAlign = 1;
  } else if (m_state != MAX_STATE && ch.at(0) == u'.') {
    m_state = DOT_STATE;
  } else if (m_state == CONVERTER_STATE && digit) {
    LOGFormattingInfo::m_min = ZEBUtConvert::toInt(ch);
    m_state = MIN_STATE;
  } else if (digit) {
    appendDigit(m_state == MIN_STATE ? LOGFormattingInfo::m_min : LOGFormattingInfo::m_max, ch);
  } else {
    finalizeConverter(ch);
    m_state = LITERAL_STATE;
  }
}

void LOGPatternParser::finalizeConverter(const I18NString& ch) {
  zebTranslate(SOURCE, __LINE__, [this, &ch] {
    if (LOGFormattingInfo::m_min > LOGPatternConverter::LARGEST_MINIMUM) {
      LOGLogLog::error("A minimum width in a conversion pattern is larger than 4096: [" +
                       m_currentLiteral + "]");
    }
    std::unique_ptr<LOGPatternConverter> converter = createConverter(ch.at(0));
    if (converter == nullptr) {
      LOGLogLog::error("Unexpected char [" + ch + "] at position " + ZEBUtConvert::handleCvt(m_i) +
                       " in conversion pattern.");
      converter = std::make_unique<LOGLiteralPatternConverter>(m_currentLiteral);
    }
    addConverter(converter.release());
  });
}

std::unique_ptr<LOGPatternConverter> LOGPatternParser::createConverter(char16_t ch) {
  LOGFormattingInfo* const info = m_formattingInfo.get();
  const auto basic = [info](int type) {
    return std::make_unique<LOGBasicPatternConverter>(info, type);
  };
  const auto location = [info](int type) {
    return std::make_unique<LOGLocationPatternConverter>(info, type);
  };
  switch (ch) {
    case u'c':
      return std::make_unique<LOGLoggerPatternConverter>(info, extractPrecisionOption());
    case u'C':
      return std::make_unique<LOGClassNamePatternConverter>(info, extractPrecisionOption());
    case u'd':
      return createDateConverter();
    case u'F':
      return location(FILE_LOCATION_CONVERTER);
    case u'l':
      return location(FULL_LOCATION_CONVERTER);
    case u'L':
      return location(LINE_LOCATION_CONVERTER);
    case u'm':
      return basic(MESSAGE_CONVERTER);
    case u'M':
      return location(METHOD_LOCATION_CONVERTER);
    case u'p':
      return basic(LEVEL_CONVERTER);
    case u'r':
      return basic(RELATIVE_TIME_CONVERTER);
    case u't':
      return basic(THREAD_CONVERTER);
    case u'x':
      return basic(NDC_CONVERTER);
    case u'X':
      return createMDCConverter();
    default:
      return nullptr;
  }
}

std::unique_ptr<LOGPatternConverter> LOGPatternParser::createDateConverter() {
  const std::unique_ptr<I18NString> dOpt(extractOption());
  std::unique_ptr<LOGDateFormat> format =
      dateFormatFor(dOpt == nullptr ? LOGAbsoluteTimeDateFormat::ISO8601_DATE_FORMAT : *dOpt);
  // A new expression, because it allocates before it lets go of the format.
  return std::unique_ptr<LOGPatternConverter>(
      new LOGDatePatternConverter(m_formattingInfo.get(), format.release()));
}

std::unique_ptr<LOGPatternConverter> LOGPatternParser::createMDCConverter() {
  const std::unique_ptr<I18NString> xOpt(extractOption());
  ZEB_ASSERT(xOpt, SOURCE, __LINE__);
  return std::make_unique<LOGMDCPatternConverter>(m_formattingInfo.get(), *xOpt);
}

void LOGPatternParser::addConverter(LOGPatternConverter* converter) {
  m_currentLiteral.clear();
  addToList(converter);
  m_state = LITERAL_STATE;
  LOGFormattingInfo::reset();
}

void LOGPatternParser::addToList(LOGPatternConverter* converter) {
  std::unique_ptr<LOGPatternConverter> owned(converter);
  if (m_head == nullptr) {
    m_head.reset(owned.release());
  } else {
    ZEB_ASSERT(m_tail, SOURCE, __LINE__);
    m_tail->setNext(owned.release());
  }
  m_tail = converter;
}

I18NString* LOGPatternParser::extractOption() {
  const auto begin = static_cast<std::size_t>(m_i) + 1;
  if (m_i >= m_patternLength || m_pattern[begin - 1] != u'{' ||
      m_lastBrace == std::u16string::npos || m_lastBrace <= begin) {
    return nullptr;
  }
  const std::size_t end = m_pattern.find(u'}', begin);
  if (end == begin) {
    return nullptr;
  }
  auto option = std::make_unique<I18NString>(&m_pattern[begin], end - begin);
  m_i = static_cast<int>(end) + 1;
  return option.release();
}

int LOGPatternParser::extractPrecisionOption() {
  const std::unique_ptr<I18NString> opt(extractOption());
  if (opt == nullptr) {
    return 0;
  }
  try {
    const int precision = ZEBUtConvert::toInt(*opt);
    if (precision >= 1) {
      return precision;
    }
  } catch (...) {
    LOGLogLog::error("Category option \"" + *opt + "\" not a decimal integer.");
    throw;
  }
  LOGLogLog::error("Precision option (" + *opt + ") isn't a positive integer.");
  return 0;
}
