#include "filters/LOGFilter.h"

#include "platform/ZEBAssertError.h"

const int LOGFilter::m_DENY;
const int LOGFilter::m_NEUTRAL;
const int LOGFilter::m_ACCEPT;

LOGFilter::LOGFilter() { instance("LOGFilter"); }

LOGFilter::LOGFilter(const LOGFilter& other)
    : LOGOptionHandler(other), LOGObject(other), next(other.next) {}

LOGFilter& LOGFilter::operator=(const LOGFilter& other) {
  LOGObject::operator=(other);
  next = other.next;
  return *this;
}

LOGFilter::~LOGFilter() { next = nullptr; }

LOGObject* LOGFilter::clone() const {
  ZEBAssertError::fail("ZEB_ASSERT_NAMED(FALSE, \"Can't clone an abstract object.\");", "LOGFilter",
                       52);
}
