#include "filters/LOGLevelRangeFilter.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGOptionConverter.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"

constexpr const char* SOURCE = "LOGLevelRangeFilter";

const I18NString LOGLevelRangeFilter::LEVEL_MIN_OPTION = "LevelMin";
const I18NString LOGLevelRangeFilter::LEVEL_MAX_OPTION = "LevelMax";
const I18NString LOGLevelRangeFilter::ACCEPT_ON_MATCH_OPTION = "AcceptOnMatch";

LOGLevelRangeFilter::LOGLevelRangeFilter() { instance(SOURCE); }

int LOGLevelRangeFilter::decide(LOGLoggingEvent* event) {
  if (levelMin != nullptr) {
    ZEB_ASSERT(event, SOURCE, 54);
    const LOGLevel* const lev = event->getLevel();
    ZEB_ASSERT(lev, SOURCE, 56);
    if (lev->toInt() < levelMin->toInt()) {
      return m_DENY;
    }
  }
  if (levelMax != nullptr) {
    ZEB_ASSERT(event, SOURCE, 66);
    const LOGLevel* const lev = event->getLevel();
    ZEB_ASSERT(lev, SOURCE, 68);
    if (lev->toInt() > levelMax->toInt()) {
      return m_DENY;
    }
  }
  return acceptOnMatch != 0 ? m_ACCEPT : m_NEUTRAL;
}

LOGObject* LOGLevelRangeFilter::clone() const {
  return zebTranslate(SOURCE, __LINE__, [this] { return new LOGLevelRangeFilter(*this); });
}

ZEBList<I18NString> LOGLevelRangeFilter::getOptionStrings() const {
  ZEBList<I18NString> options;
  options.add(LEVEL_MIN_OPTION);
  options.add(LEVEL_MAX_OPTION);
  options.add(ACCEPT_ON_MATCH_OPTION);
  return options;
}

void LOGLevelRangeFilter::setOption(const I18NString& option, const I18NString& value) {
  if (I18NLocale::equalIgnoreCase(option, LEVEL_MIN_OPTION)) {
    levelMin = LOGOptionConverter::toLevel(value, nullptr);
  } else if (!I18NLocale::equalIgnoreCase(option, LEVEL_MAX_OPTION)) {
    levelMax = LOGOptionConverter::toLevel(value, nullptr);
  } else {
    acceptOnMatch = LOGOptionConverter::toBoolean(value, acceptOnMatch);
  }
}
