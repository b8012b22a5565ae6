#ifndef TESTS_SUPPORT_TESTEVENT_H
#define TESTS_SUPPORT_TESTEVENT_H

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

#endif
