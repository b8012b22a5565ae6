#ifndef TESTS_SUPPORT_CAPTURINGAPPENDER_H
#define TESTS_SUPPORT_CAPTURINGAPPENDER_H

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "appenders/LOGAppenderSkeleton.h"
#include "core/LOGLoggingEvent.h"

/// Keeps the messages that reach it, and can be told what else to do with an event.
class CapturingAppender : public LOGAppenderSkeleton {
 public:
  explicit CapturingAppender(const std::string& name = "capture") { setName(name); }

  void append(LOGLoggingEvent* event) override {
    const std::unique_ptr<I18NString> message(event->getRenderedMessage());
    messages.push_back(message == nullptr ? "(null)" : message->toStdString());
    if (onAppend) {
      onAppend(event);
    }
  }
  void close() override {
    m_closed = 1;
    ++closings;
  }
  void activateOptions() override {
    ++activations;
    if (onActivate) {
      onActivate();
    }
  }

  std::vector<std::string> messages;
  std::function<void(LOGLoggingEvent*)> onAppend;
  std::function<void()> onActivate;
  int closings = 0;
  std::atomic<int> activations{0};  // two queues may pass events on at once
};

#endif
