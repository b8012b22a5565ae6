#ifndef LAYOUTS_LOGEVENTPART_H
#define LAYOUTS_LOGEVENTPART_H

class I18NString;
class LOGLoggingEvent;

/// A part of an event that is shown as it is, or none. A pattern layout takes such parts straight
/// from the event, without a call of their converters.
class LOGEventPart {
 public:
  static constexpr int LOGGER_NAME = 1;

  LOGEventPart() = default;
  /// LOGGER_NAME, or THREAD_, LEVEL_, NDC_ or MESSAGE_CONVERTER of LOGPatternParser; any other
  /// makes it none.
  explicit LOGEventPart(int type) : m_type(type) {}
  /// The part, which belongs to the event; null where there is none, and where its converter knows
  /// more: for a message that is not rendered by its own text, and for the level of an event that
  /// has none.
  const I18NString* textOf(LOGLoggingEvent& event) const;

 private:
  int m_type = 0;
};

#endif
