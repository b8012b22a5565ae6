#ifndef CORE_LOGLOGGINGEVENT_H
#define CORE_LOGLOGGINGEVENT_H

#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <string_view>

#include "core/LOGObject.h"
#include "core/LOGSerializable.h"
#include "layouts/LOGLocationInfo.h"
#include "platform/I18NString.h"

class LOGLevel;
class LOGLogger;
class ZEBFmHold;

/// A text that is to become a message, told apart from a message object.
struct LOGMessageText {
  const I18NString& text;
};

/// The same as UTF-8; invalid bytes become U+FFFD.
struct LOGMessageUtf8 {
  std::string_view text;
};

/// The record of one enabled logging request: what is logged, by which logger and at which level,
/// and the context that was current. A logger makes one on its stack and hands it down to the
/// appenders; an appender that keeps one makes a copy. An event is used by one thread at a time.
class LOG4ZEB_EXPORT LOGLoggingEvent : public LOGSerializable {
 public:
  LOGLoggingEvent();
  /// Takes the time and a clone of `message`, which may be null and stays the caller's. Logger and
  /// level are not owned. The class name says nothing yet, because no location is gathered. Throws
  /// ZEBAssertError when `logger` is null, ZEBOutOfMemoryError, and what the clone throws.
  LOGLoggingEvent(const I18NString& fqnOfCategoryClass, LOGLogger* logger, LOGLevel* level,
                  LOGObject* message);
  /// The same with a message of that text. Throws std::bad_alloc, too.
  LOGLoggingEvent(LOGLogger* logger, LOGLevel* level, const LOGMessageText& message);
  LOGLoggingEvent(LOGLogger* logger, LOGLevel* level, const LOGMessageUtf8& message);
  /// The copy owns a clone of the message and its own location; its throwable text is empty. Throws
  /// ZEBOutOfMemoryError, and what the clone throws.
  LOGLoggingEvent(const LOGLoggingEvent& other);
  /// Takes over level, logger, time and a clone of the message, and renders what it was assigned.
  /// Deliberate: name, context, thread and throwable text stay those of the target. Throws as the
  /// copy does, and has changed nothing then.
  LOGLoggingEvent& operator=(const LOGLoggingEvent& other);
  ~LOGLoggingEvent() override;

  /// The event's own clone of the message, or null.
  LOGObject* getMessage() { return m_hasPlainMessage ? &m_plainMessage : m_message.get(); }
  const LOGObject* getMessage() const {
    return m_hasPlainMessage ? &m_plainMessage : m_message.get();
  }
  /// The message as text in a new string that the caller deletes, or null without a message, a
  /// logger or a renderer. Each call renders anew, and throws what rendering throws, unless the
  /// message was rendered before, as a logger does for every message whose rendering is code of the
  /// program: then each call returns, or throws, what that gave.
  I18NString* getRenderedMessage();
  /// Appends that text to `text` and returns whether there was one; usually without an allocation.
  bool appendRenderedMessage(I18NString& text);
  /// The message's own text, which belongs to the event, where rendering gives that; else null.
  const I18NString* ownTextOfMessage() const;
  /// The diagnostic context of the thread that asks first.
  const I18NString& getNDC();
  /// The number of the thread that asks first, in decimal.
  const I18NString& getThreadName();
  /// Never null.
  LOGLocationInfo* getLocationInformation() { return &m_locationInfo; }
  /// Whether rendering the message runs code of the program, and was not done yet.
  bool needsRendering() const;
  /// Whether that was done.
  bool isRendered() const noexcept {
    return m_rare != nullptr && m_rare->rendering.result != Rendering::Result::NOT_DONE;
  }
  /// Renders the message once, for all calls that follow. Throws std::bad_alloc; what rendering
  /// throws is kept.
  void render();
  /// A copy for another thread, which shares the message. Throws as the constructor does.
  std::unique_ptr<LOGLoggingEvent> copyForQueue() const;
  const I18NString& getThrowableStrRep() const;
  /// Throws ZEBOutOfMemoryError.
  void setThrowableStrRep(const I18NString& text);
  const I18NString& getLoggerName() const { return m_loggerName; }
  /// Seconds since 1970-01-01 00:00 UTC.
  std::int64_t getTimeStamp() const { return m_timeStamp; }
  /// When the library was loaded, in the same unit.
  static std::int64_t getStartTime() { return m_startTime; }

  LOGLevel* getLevel() const { return m_level; }
  void setLevel(LOGLevel* level) { m_level = level; }
  LOGLogger* getLogger() const { return m_logger; }
  void setLogger(LOGLogger* logger) { m_logger = logger; }

  /// Where the line of this event may wait in a file's memory, null, also in copies, where it may
  /// not. Set by the thread that delivers the event.
  ZEBFmHold* getHold() const noexcept { return m_hold; }
  void setHold(ZEBFmHold* hold) noexcept { m_hold = hold; }

  /// No mapped context is kept: always null.
  const I18NString* getMDC(const I18NString&) const { return nullptr; }
  void getMDCCopy() {}
  /// Events are not read from or written to streams.
  void readObject() {}
  void writeObject() {}

 private:
  friend class LOGEventRecords;

  /// Everything but the message.
  LOGLoggingEvent(LOGLogger* logger, LOGLevel* level);

  struct SharingMessage {};
  LOGLoggingEvent(const LOGLoggingEvent& other, SharingMessage);

  /// What rendering the message gave.
  struct Rendering {
    enum class Result { NOT_DONE, NULL_TEXT, TEXT, FAILURE };
    Result result = Result::NOT_DONE;
    I18NString text;
    // Shared with copies, and counted where the thread sanitizer sees it.
    std::shared_ptr<const std::exception_ptr> failure;
  };

  /// What hardly any event has.
  struct Rare {
    Rendering rendering;
    I18NString throwableStrRep;
  };

  void setNDC(const I18NString& context);
  bool isOwnText() const;
  bool isRenderedByProgram() const;
  Rare& rare();
  const I18NString* keptRendering() const;
  void setRenderedMessage(const I18NString& text);
  void setMessage(const LOGObject* message);

  std::int64_t m_timeStamp = 0;
  std::int32_t m_sequence = std::numeric_limits<std::int32_t>::min();
  std::int32_t m_ndcLookupRequired = 1;
  std::int32_t m_mdcCopyLookupRequired = 1;
  // The message is m_plainMessage, which costs no allocation, or else, being of a class of its own,
  // *m_message; or there is none.
  bool m_hasPlainMessage = false;
  LOGLocationInfo m_locationInfo;
  LOGLevel* m_level = nullptr;
  LOGLogger* m_logger = nullptr;
  std::shared_ptr<LOGObject> m_message;  // with copies for queues
  std::unique_ptr<Rare> m_rare;
  ZEBFmHold* m_hold = nullptr;
  I18NString m_threadName;
  I18NString m_ndc;
  I18NString m_loggerName;
  LOGObject m_plainMessage;

  static const std::int64_t m_startTime;
};

#endif
