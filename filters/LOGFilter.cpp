#include "filters/LOGFilter.h"

#include "platform/ZEBAssertError.h"

const int LOGFilter::m_DENY = -1;
const int LOGFilter::m_NEUTRAL = 0;
const int LOGFilter::m_ACCEPT = 1;

LOGFilter::LOGFilter() { instance("LOGFilter"); }

LOGFilter::LOGFilter(const LOGFilter& other)
    : LOGOptionHandler(other), LOGObject(other), next(other.next.load()) {}

LOGFilter& LOGFilter::operator=(const LOGFilter& other) {
  LOGObject::operator=(other);
  next = other.next.load();
  return *this;
}

LOGFilter::~LOGFilter() { next = nullptr; }

void LOGFilter::activateOptions() {}

LOGObject* LOGFilter::clone() const {
  ZEBAssertError::fail("ZEB_ASSERT_NAMED(FALSE, \"Can't clone an abstract object.\");", "LOGFilter",
                       52);
}
