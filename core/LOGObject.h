#ifndef CORE_LOGOBJECT_H
#define CORE_LOGOBJECT_H

#include <memory>

#include "platform/I18NString.h"

/// The base of messages and of most objects of the library: a text, and a tag that names the
/// object's class. The tag is what renderers and the configuration tell objects apart by.
class LOG4ZEB_EXPORT LOGObject {
 public:
  /// An object without text; the tag is "LOGObject".
  LOGObject();
  /// A message with the given text; the tag is "LOGObject".
  LOGObject(const I18NString& text) : m_string(text) {}  // NOLINT: implicit
  LOGObject(const LOGObject& other)
      : m_instance(other.m_instance == nullptr ? nullptr : copyOf(*other.m_instance)),
        m_string(other.m_string) {}
  LOGObject& operator=(const LOGObject&);
  virtual ~LOGObject();

  /// 1 when both tag and text are equal, else 0.
  virtual int operator==(const LOGObject& other) const;
  /// The negation of the virtual operator==.
  virtual int operator!=(const LOGObject& other) const;
  /// The object's text.
  virtual const I18NString& toString() const { return m_string; }
  /// A new object equal to this one, owned by the caller. Throws ZEBOutOfMemoryError. Messages are
  /// cloned on the logging thread, for every enabled request.
  virtual LOGObject* clone() const;

  /// Sets the text.
  void setText(const I18NString& text) { m_string = text; }
  /// The tag.
  const I18NString& instanceOf() const noexcept {
    return m_instance == nullptr ? defaultTag() : *m_instance;
  }
  /// Sets the tag.
  void instance(const I18NString& tag);

 private:
  friend class LOGEventRecords;
  friend class LOGLoggingEvent;

  static const I18NString& defaultTag() noexcept;
  static std::unique_ptr<I18NString> copyOf(const I18NString& tag);

  std::unique_ptr<I18NString> m_instance;  // null for the tag of nearly all messages

 protected:
  I18NString m_string;
};

#endif
