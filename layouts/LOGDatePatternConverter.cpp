#include "layouts/LOGDatePatternConverter.h"

#include <typeinfo>
#include <utility>

#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGAbsoluteTimeDateFormat.h"
#include "layouts/LOGDateTimeDateFormat.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGRelativeTimeDateFormat.h"
#include "layouts/LOGSimpleDateFormat.h"
#include "platform/ZEBAssertError.h"

namespace {

constexpr const char* SOURCE = "LOGPatternParserUtils";

bool isKnown(const LOGDateFormat& format) {
  const std::type_info& type = typeid(format);
  return type == typeid(LOGAbsoluteTimeDateFormat) || type == typeid(LOGDateTimeDateFormat) ||
         type == typeid(LOGISODateFormat) || type == typeid(LOGRelativeTimeDateFormat) ||
         type == typeid(LOGSimpleDateFormat);
}

}  // namespace

LOGDatePatternConverter::LOGDatePatternConverter(LOGFormattingInfo* formattingInfo,
                                                 LOGDateFormat* dateFormat)
    : LOGDatePatternConverter(formattingInfo, std::unique_ptr<LOGDateFormat>(dateFormat)) {}

LOGDatePatternConverter::LOGDatePatternConverter(LOGFormattingInfo* formattingInfo,
                                                 std::unique_ptr<LOGDateFormat> dateFormat)
    : LOGPatternConverter(formattingInfo), m_dateFormat(std::move(dateFormat)) {
  ZEB_ASSERT(m_dateFormat, SOURCE, __LINE__);
  m_isKnownFormat = isKnown(*m_dateFormat);
}

LOG4ZEB_HOT bool LOGDatePatternConverter::appendText(I18NString& text, LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  if (!m_isKnownFormat || m_text.isEmpty() || m_date.getTime() != event->getTimeStamp()) {
    m_text.clear();
    m_date.setTime(event->getTimeStamp());
    const unsigned memoryFailures = logMemoryFailures();
    const I18NString& date = m_dateFormat->format(&m_date);
    logRequireMemorySince(memoryFailures);
    m_text = date;
  }
  text.append(m_text);
  return true;
}
