#include "filters/LOGLevelMatchFilter.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGOptionConverter.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"

constexpr const char* SOURCE = "LOGLevelMatchFilter";

const I18NString LOGLevelMatchFilter::LEVEL_TO_MATCH_OPTION = "LevelToMatch";
const I18NString LOGLevelMatchFilter::ACCEPT_ON_MATCH_OPTION = "AcceptOnMatch";

LOGLevelMatchFilter::LOGLevelMatchFilter() { instance(SOURCE); }

int LOGLevelMatchFilter::decide(LOGLoggingEvent* event) {
  if (levelToMatch == nullptr) {
    return m_NEUTRAL;
  }
  ZEB_ASSERT(event, SOURCE, 75);
  const LOGLevel* const logLevel = event->getLevel();
  ZEB_ASSERT(logLevel, SOURCE, 77);
  if ((*levelToMatch == *logLevel) == 0) {
    return m_NEUTRAL;
  }
  return acceptOnMatch != 0 ? m_ACCEPT : m_DENY;
}

LOGObject* LOGLevelMatchFilter::clone() const {
  return zebTranslate(SOURCE, __LINE__, [this] { return new LOGLevelMatchFilter(*this); });
}

void LOGLevelMatchFilter::setLevelToMatch(const I18NString& level) {
  levelToMatch = LOGOptionConverter::toLevel(level, nullptr);
}

I18NString* LOGLevelMatchFilter::getLevelToMatch() const {
  return zebTranslate(SOURCE, __LINE__, [this] {
    return levelToMatch == nullptr ? nullptr : new I18NString(levelToMatch->toString());
  });
}
