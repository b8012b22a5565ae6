#ifndef TESTS_SUPPORT_TESTEVENT_H
#define TESTS_SUPPORT_TESTEVENT_H

#include <cctype>
#include <functional>
#include <string>

#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"

/// A message that does something while it is rendered.
class ActingMessage : public LOGObject {
 public:
  ActingMessage(const std::string& text, std::function<void()> onRender)
      : LOGObject(text), m_onRender(std::move(onRender)) {}
  const I18NString& toString() const override {
    m_onRender();
    return LOGObject::toString();
  }
  LOGObject* clone() const override { return new ActingMessage(*this); }

 private:
  std::function<void()> m_onRender;
};

/// An event as the logger of that name makes it.
class TestEvent : public LOGLoggingEvent {
 public:
  TestEvent(const std::string& logger, const std::string& level, LOGObject* message)
      : LOGLoggingEvent("LOGLogger", LOGManager::getLogger(logger), LOGLevel::toLevel(level),
                        message) {}
  TestEvent(const std::string& logger, const std::string& level, const std::string& message)
      : TestEvent(logger, level, Temporary{LOGObject(message)}) {}

 private:
  struct Temporary {
    LOGObject message;
  };
  TestEvent(const std::string& logger, const std::string& level, Temporary temporary)
      : TestEvent(logger, level, &temporary.message) {}
};

/// The text with each run of digits as one 9 and each run of letters as one A.
inline std::string shapeOf(const std::string& text) {
  std::string shape;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const char kind = std::isdigit(byte) != 0 ? '9' : std::isalpha(byte) != 0 ? 'A' : c;
    if (std::isalnum(byte) == 0 || shape.empty() || shape.back() != kind) {
      shape += kind;
    }
  }
  return shape;
}

#endif
