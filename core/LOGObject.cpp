#include "core/LOGObject.h"

#include <new>

#include "platform/ZEBTranslate.h"

namespace {

/// Made when the library is loaded: a fork beside its making would leave the child waiting for
/// ever.
[[maybe_unused]] const I18NString& DEFAULT_TAG = LOGObject().instanceOf();

}  // namespace

LOGObject::LOGObject() = default;

LOGObject& LOGObject::operator=(const LOGObject& other) {
  if (this != &other) {
    m_instance = other.m_instance == nullptr ? nullptr : copyOf(*other.m_instance);
    m_string = other.m_string;
  }
  return *this;
}

LOG4ZEB_HOT LOGObject::~LOGObject() = default;

const I18NString& LOGObject::defaultTag() noexcept {
  // Never destroyed, because static destructors log too, and made without asking for memory, which
  // there may not be at the first use.
  alignas(I18NString) static unsigned char memory[sizeof(I18NString)];
  static const auto* const tag = new (memory) I18NString("LOGObject");
  return *tag;
}

std::unique_ptr<I18NString> LOGObject::copyOf(const I18NString& tag) {
  return std::make_unique<I18NString>(tag);
}

void LOGObject::instance(const I18NString& tag) { m_instance = copyOf(tag); }

int LOGObject::operator==(const LOGObject& other) const {
  return instanceOf() == other.instanceOf() && m_string == other.m_string ? 1 : 0;
}

int LOGObject::operator!=(const LOGObject& other) const { return *this == other ? 0 : 1; }

LOGObject* LOGObject::clone() const {
  return zebTranslate("LOGObject", __LINE__, [this] { return new LOGObject(*this); });
}
