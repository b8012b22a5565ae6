#ifndef FILTERS_LOGFILTER_H
#define FILTERS_LOGFILTER_H

#include "core/LOGObject.h"
#include "core/LOGOptionHandler.h"
#include "platform/ZEBSharedPointer.h"

class LOGLoggingEvent;

/// Looks at an event and says whether an appender should take it. An appender asks its filters one
/// after the other until one accepts or denies; a filter is linked to the next one and owns
/// nothing of it.
class LOG4ZEB_EXPORT LOGFilter : public LOGOptionHandler, public LOGObject {
 public:
  /// Drop the event; no further filter is asked.
  static const int m_DENY = -1;
  /// No opinion: ask the next filter; the end of the chain means to append.
  static const int m_NEUTRAL = 0;
  /// Append the event; no further filter is asked.
  static const int m_ACCEPT = 1;

  LOGFilter();
  /// The copy is linked to the same successor.
  LOGFilter(const LOGFilter& other);
  LOGFilter& operator=(const LOGFilter& other);
  ~LOGFilter() override;

  void activateOptions() override {}
  /// One of the three decisions; any other value makes the appender ask again, for ever. Called
  /// under the appender's lock.
  virtual int decide(LOGLoggingEvent* event) = 0;
  /// Refuses: throws ZEBAssertError. The concrete filters return a copy.
  LOGObject* clone() const override;

  /// The following filter, null at the end; set by LOGAppenderSkeleton::addFilter.
  ZEBSharedPointer<LOGFilter> next;
};

#endif
