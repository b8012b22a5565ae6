#include "filters/LOGDenyAllFilter.h"

#include "platform/ZEBTranslate.h"

LOGDenyAllFilter::LOGDenyAllFilter() { instance("LOGDenyAllFilter"); }

LOGObject* LOGDenyAllFilter::clone() const {
  return zebTranslate("LOGDenyAllFilter", __LINE__, [this] { return new LOGDenyAllFilter(*this); });
}
