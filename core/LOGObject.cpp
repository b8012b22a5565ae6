#include "core/LOGObject.h"

#include "platform/ZEBTranslate.h"

LOGObject::LOGObject() : m_instance("LOGObject") {}

LOGObject::LOGObject(const I18NString& text) : m_instance("LOGObject"), m_string(text) {}

LOGObject::LOGObject(const LOGObject&) = default;
LOGObject& LOGObject::operator=(const LOGObject&) = default;
LOGObject::~LOGObject() = default;

int LOGObject::operator==(const LOGObject& other) const {
  return m_instance == other.m_instance && m_string == other.m_string ? 1 : 0;
}

int LOGObject::operator!=(const LOGObject& other) const { return *this == other ? 0 : 1; }

const I18NString& LOGObject::toString() const { return m_string; }

LOGObject* LOGObject::clone() const {
  return zebTranslate("LOGObject", __LINE__, [this] { return new LOGObject(*this); });
}
