#include "layouts/LOGPatternParser.h"

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
    : m_scanner(pattern),
      m_formattingInfo(
          zebTranslate(SOURCE, __LINE__, [] { return std::make_unique<LOGFormattingInfo>(); })) {}

LOGPatternParser::~LOGPatternParser() = default;

LOGPatternConverter* LOGPatternParser::parse() {
  const ZEBThreadGuard guard(g_parseLock);
  return zebTranslate(SOURCE, __LINE__, [this] {
    using Piece = LOGPatternScanner::Piece;
    for (Piece piece = m_scanner.next(); piece != Piece::End; piece = m_scanner.next()) {
      // Deliberate: a "%" at the end is text, like what is before it.
      if (piece == Piece::Text || (piece == Piece::Unfinished && m_scanner.text() == "%")) {
        m_currentLiteral.append(m_scanner.text());
        continue;
      }
      flushLiteral();
      m_currentLiteral = m_scanner.text();
      LOGFormattingInfo::m_min = m_scanner.minimum();
      LOGFormattingInfo::m_max = m_scanner.maximum();
      LOGFormattingInfo::m_leftAlign = m_scanner.isLeftAligned() ? 1 : 0;
      // Deliberate: what is cut off stays text, and nothing is reported.
      if (piece == Piece::Specifier) {
        finalizeConverter(m_currentLiteral.substring(m_currentLiteral.length() - 1));
      }
    }
    flushLiteral();
    return m_head.release();
  });
}

void LOGPatternParser::flushLiteral() {
  if (!m_currentLiteral.isEmpty()) {
    addToList(new LOGLiteralPatternConverter(m_currentLiteral));
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
      LOGLogLog::error("Unexpected char [" + ch + "] at position " +
                       ZEBUtConvert::handleCvt(static_cast<int>(m_scanner.position())) +
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
  const std::optional<I18NString> option = m_scanner.readOption();
  return option ? new I18NString(*option) : nullptr;
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
