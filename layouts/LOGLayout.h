#ifndef LAYOUTS_LOGLAYOUT_H
#define LAYOUTS_LOGLAYOUT_H

#include <utility>

#include "core/LOGMutex.h"
#include "core/LOGObject.h"
#include "core/LOGOptionHandler.h"

class LOGLoggingEvent;

/// The LOGObject that a layout is. It is a class of its own because a layout that overrode clone()
/// itself would get a place for it in its first table, in front of what derived layouts add.
class LOG4ZEB_EXPORT LOGLayoutObject : public LOGObject {
 public:
  /// Layouts refuse to be cloned: throws ZEBAssertError.
  LOGObject* clone() const override;

 protected:
  LOGLayoutObject() = default;
};

/// Turns an event into the text that an appender writes. This class is the base of all layouts and
/// itself the plain one: the message and a line end.
///
/// Every operation that returns text returns a buffer of the layout, which stays valid until the
/// next call; a caller copies what it keeps. No such operation takes a lock. Threads that share
/// a layout hold its lock around the call and the copy of its result. On one thread format() may be
/// entered again by the message that it renders.
class LOG4ZEB_EXPORT LOGLayout : public LOGOptionHandler, public LOGLayoutObject, public LOGMutex {
 public:
  LOGLayout();
  /// A new plain layout: nothing is taken over.
  LOGLayout(const LOGLayout&);
  LOGLayout& operator=(const LOGLayout&) = delete;
  ~LOGLayout() override;

  void activateOptions() override {}
  /// The text of the event; empty, without a line end, for a null event. What the rendering of the
  /// message throws is reported and goes on to the caller.
  virtual const I18NString& format(LOGLoggingEvent* event);
  /// Sets `text` to what format() gives. A pattern layout then builds it there, and the text that
  /// format() returned last stays.
  void formatInto(I18NString& text, LOGLoggingEvent* event);
  virtual const I18NString& getContentType() { return keep("text/plain"); }
  virtual const I18NString& getHeader() { return keep({}); }
  virtual const I18NString& getFooter() { return keep({}); }
  /// 1 when the layout leaves the event's throwable to the appender, else 0.
  virtual int ignoresThrowable() { return 1; }

 protected:
  /// An empty string with the room of the buffer, to build a text in. The buffer itself is set
  /// last, by keep(), so that a message which logs through this layout cannot mix its text in.
  I18NString takeBuffer() noexcept;
  /// Makes `text` the content of the buffer and returns the buffer.
  const I18NString& keep(I18NString text) noexcept;
  const I18NString& getLineSeparator() const noexcept { return m_lineSeparator; }

  /// Where formatInto() wants the text that is built now, in place of the buffer, else null. Told
  /// once, so that what the message formats through this layout goes elsewhere.
  I18NString* takeTarget() noexcept { return std::exchange(m_target, nullptr); }

 private:
  I18NString m_buffer;
  I18NString* m_target = nullptr;
  I18NString m_lineSeparator;
};

#endif
