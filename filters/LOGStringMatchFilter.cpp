#include "filters/LOGStringMatchFilter.h"

#include <memory>

#include "core/LOGLoggingEvent.h"
#include "core/LOGOptionConverter.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"

constexpr const char* SOURCE = "LOGStringMatchFilter";

const I18NString LOGStringMatchFilter::STRING_TO_MATCH_OPTION = "StringToMatch";
const I18NString LOGStringMatchFilter::ACCEPT_ON_MATCH_OPTION = "AcceptOnMatch";

LOGStringMatchFilter::LOGStringMatchFilter() { instance(SOURCE); }

int LOGStringMatchFilter::decide(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, 84);
  const std::unique_ptr<I18NString> message(event->getRenderedMessage());
  if (message == nullptr || stringToMatch.isEmpty() ||
      message->lastIndexOf(stringToMatch) == I18NString::NOT_FOUND) {
    return m_NEUTRAL;
  }
  return acceptOnMatch != 0 ? m_ACCEPT : m_DENY;
}

LOGObject* LOGStringMatchFilter::clone() const {
  return zebTranslate(SOURCE, 115, [this] { return new LOGStringMatchFilter(*this); });
}

ZEBList<I18NString> LOGStringMatchFilter::getOptionStrings() const {
  ZEBList<I18NString> options;
  options.add(STRING_TO_MATCH_OPTION);
  options.add(ACCEPT_ON_MATCH_OPTION);
  return options;
}

void LOGStringMatchFilter::setOption(const I18NString& option, const I18NString& value) {
  if (I18NLocale::equalIgnoreCase(option, STRING_TO_MATCH_OPTION)) {
    stringToMatch = value;
  } else if (I18NLocale::equalIgnoreCase(option, ACCEPT_ON_MATCH_OPTION)) {
    acceptOnMatch = LOGOptionConverter::toBoolean(value, acceptOnMatch);
  }
}
