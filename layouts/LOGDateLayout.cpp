#include "layouts/LOGDateLayout.h"

#include <utility>

#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGDate.h"
#include "layouts/LOGDateTimeDateFormat.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGRelativeTimeDateFormat.h"
#include "layouts/LOGSimpleDateFormat.h"
#include "layouts/LOGTimeZone.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGDateLayout";
constexpr const char* NULL_DATE_FORMAT = "NULL";
constexpr const char* RELATIVE_TIME_DATE_FORMAT = "RELATIVE";

/// Null for the name of no format.
std::unique_ptr<LOGDateFormat> formatNamed(const I18NString& name) {
  if (name == NULL_DATE_FORMAT) {
    return nullptr;
  }
  if (I18NLocale::equalIgnoreCase(name, RELATIVE_TIME_DATE_FORMAT)) {
    return std::make_unique<LOGRelativeTimeDateFormat>();
  }
  if (I18NLocale::equalIgnoreCase(name, LOGAbsoluteTimeDateFormat::ABS_TIME_DATE_FORMAT)) {
    return std::make_unique<LOGAbsoluteTimeDateFormat>();
  }
  if (I18NLocale::equalIgnoreCase(name, LOGAbsoluteTimeDateFormat::DATE_AND_TIME_DATE_FORMAT)) {
    return std::make_unique<LOGDateTimeDateFormat>();
  }
  if (I18NLocale::equalIgnoreCase(name, LOGAbsoluteTimeDateFormat::ISO8601_DATE_FORMAT)) {
    LOGLogLog::debug("Creating a ISODateFormat");
    return std::make_unique<LOGISODateFormat>();
  }
  return std::make_unique<LOGSimpleDateFormat>(name);
}

/// The layout's lock; a failure to take it is reported with `text`.
ZEBThreadGuard lock(const LOGLayout& layout, const char* text) {
  return logReportingAndPassing(text,
                                [&layout] { return ZEBThreadGuard(layout.getCriticalSection()); });
}

}  // namespace

const I18NString LOGDateLayout::DATE_FORMAT_OPTION = "DateFormat";
const I18NString LOGDateLayout::TIMEZONE_OPTION = "TimeZone";

LOGDateLayout::LOGDateLayout() { instance(SOURCE); }

LOGDateLayout::~LOGDateLayout() = default;

void LOGDateLayout::activateOptions() {
  const ZEBThreadGuard guard =
      lock(*this, "LOGDateLayout::activateOptions -- unable to lock mutex");
  if (!m_dateFormatOption.isEmpty()) {
    setDateFormat(I18NString(m_dateFormatOption));
  }
  if (!m_timeZoneID.isEmpty() && m_dateFormat != nullptr) {
    std::unique_ptr<LOGTimeZone> timeZone(LOGTimeZone::getTimeZone(m_timeZoneID));
    m_dateFormat->setTimeZone(timeZone.get());
    m_timeZone = std::move(timeZone);
  }
}

void LOGDateLayout::setOption(const I18NString& option, const I18NString& value) {
  if (option == DATE_FORMAT_OPTION) {
    setDateFormat(value);
  } else if (option == TIMEZONE_OPTION) {
    setTimeZone(value);
  }
}

void LOGDateLayout::dateFormat(I18NString& buf, LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  if (m_dateFormat == nullptr) {
    return;
  }
  if (m_date == nullptr) {
    m_date = zebTranslate(SOURCE, __LINE__, [] { return std::make_unique<LOGDate>(); });
  }
  // The formats write one second always the same.
  if (m_dateText.isEmpty() || m_date->getTime() != event->getTimeStamp()) {
    m_dateText.clear();
    m_date->setTime(event->getTimeStamp());
    const unsigned memoryFailures = logMemoryFailures();
    const I18NString& date = m_dateFormat->format(m_date.get());
    logRequireMemorySince(memoryFailures);
    m_dateText = date;
  }
  buf = m_dateText;
  buf.append(1, ' ');
}

void LOGDateLayout::setDateFormat(const I18NString& dateFormat, LOGTimeZone* timeZone) {
  std::unique_ptr<LOGTimeZone> ownZone(timeZone);
  const ZEBThreadGuard guard = lock(*this, "LOGDateLayout::setDateFormat -- unable to lock mutex");
  std::unique_ptr<LOGDateFormat> format =
      zebTranslate(SOURCE, __LINE__, [&dateFormat] { return formatNamed(dateFormat); });
  if (format != nullptr) {
    format->setTimeZone(ownZone.get());
  }
  m_dateFormatOption = dateFormat;
  m_dateFormat = std::move(format);
  m_dateText.clear();
  m_timeZone = std::move(ownZone);
}

void LOGDateLayout::setDateFormat(const I18NString& dateFormat) {
  setDateFormat(dateFormat, LOGTimeZone::getDefault());
}

ZEBList<I18NString> LOGDateLayout::getOptionStrings() const {
  ZEBList<I18NString> options;
  options.add(DATE_FORMAT_OPTION);
  options.add(TIMEZONE_OPTION);
  return options;
}
