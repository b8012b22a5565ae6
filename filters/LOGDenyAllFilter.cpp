#include "filters/LOGDenyAllFilter.h"

#include "platform/ZEBTranslate.h"

LOGDenyAllFilter::LOGDenyAllFilter() { instance("LOGDenyAllFilter"); }

int LOGDenyAllFilter::decide(LOGLoggingEvent*) { return m_DENY; }

LOGObject* LOGDenyAllFilter::clone() const {
  return zebTranslate("LOGDenyAllFilter", __LINE__, [this] { return new LOGDenyAllFilter(*this); });
}

ZEBList<I18NString> LOGDenyAllFilter::getOptionStrings() const { return {}; }

void LOGDenyAllFilter::setOption(const I18NString&, const I18NString&) {}
