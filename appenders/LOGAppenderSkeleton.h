#ifndef APPENDERS_LOGAPPENDERSKELETON_H
#define APPENDERS_LOGAPPENDERSKELETON_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "appenders/LOGAppender.h"
#include "appenders/LOGErrorHandler.h"
#include "core/LOGMutex.h"
#include "core/LOGObject.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBOwnedPointer.h"
#include "platform/ZEBSharedPointer.h"

class LOGLevel;

/// The base of every appender. It holds what they share (name, layout, threshold, filters, error
/// handler, lock) and decides in doAppend() which events reach append(), which a concrete appender
/// supplies. append() runs under the appender's lock, so it needs no locking of its own.
///
/// Layout, filters and threshold are not owned and must outlive the appender's use; the error
/// handler is owned. The setters of these may be called while events are logged; the name is set
/// before the appender is shared.
class LOG4ZEB_EXPORT LOGAppenderSkeleton : public LOGMutex, public LOGAppender, public LOGObject {
 public:
  LOGAppenderSkeleton();
  /// The copy shares layout, filters and threshold, and has a clone of the error handler.
  LOGAppenderSkeleton(const LOGAppenderSkeleton& other);
  LOGAppenderSkeleton& operator=(const LOGAppenderSkeleton& other);
  /// Does not close; a concrete appender closes in its own destructor.
  ~LOGAppenderSkeleton() override;

  /// Called before every event, possibly by two threads at once: cheap once the appender works.
  virtual void activateOptions() {}
  /// Writes the event; called by doAppend(), under the appender's lock. Does nothing here.
  virtual void append(LOGLoggingEvent*) {}

  /// Appends the event if the appender is open and threshold and filters let it pass. Failures of
  /// the library's family, and failed allocations, are reported and end here; others are reported
  /// and go to the caller. Throws ZEBAssertError when an open appender is given null.
  void doAppend(LOGLoggingEvent* event) override;
  /// Does nothing here; a concrete appender sets m_closed to 1 and frees its destination.
  void close() override {}
  /// Closes unless closed.
  void finalize();

  /// Adds at the end of the chain, through the filter's `next`. A filter that is added twice is
  /// linked to itself.
  void addFilter(LOGFilter* newFilter) override;
  /// Empties the chain; the filters stay linked to each other.
  void clearFilters() override;
  LOGFilter* getFilter() const { return m_headFilter; }
  LOGFilter* getFirstFilter() const { return m_headFilter; }

  const I18NString& getName() const override { return m_name; }
  void setName(const I18NString& name) override { m_name = name; }
  /// Takes ownership and deletes the handler before; null changes nothing.
  void setErrorHandler(LOGErrorHandler* errorHandler) override;
  const LOGErrorHandler* getErrorHandler() const override { return m_errorHandler.get(); }
  /// Null changes nothing.
  void setLayout(LOGLayout* layout) override;
  const LOGLayout* getLayout() const override { return m_layout; }
  /// 1 when the appender is of no use without a layout; here 0.
  int requiresLayout() override { return 0; }

  /// The highest level that passes; null, the default, lets all pass.
  const LOGLevel* getThreshold() const { return m_threshold; }
  void setThreshold(const LOGLevel* threshold) { m_threshold = threshold; }
  /// 1 when a level passes the threshold, else 0. The threshold is an upper bound, on purpose: with
  /// WARN, ERROR events are dropped.
  int isAsSevereAsThreshold(const LOGLevel* level) const;

  /// A stale appender was taken out of use by the configuration; it is never opened again by
  /// itself.
  void markAsStale() { m_stale = 1; }
  /// Whether close() was called and nothing has opened the appender since.
  bool isClosedForGood() const { return m_closeRequested; }
  int isStale() const { return m_stale; }

  /// Refuses: throws ZEBAssertError.
  LOGObject* clone() const override;
  /// 1 when name, closed flag, layout, filters and threshold are the same and the error handlers
  /// are the same or equal, else 0.
  int operator==(const LOGAppenderSkeleton& other) const;
  int operator!=(const LOGAppenderSkeleton& other) const { return *this == other ? 0 : 1; }
  int operator==(const LOGObject& other) const override;
  int operator!=(const LOGObject& other) const override;
  // Without these C++20 compares with the operands exchanged.
  friend int operator==(const LOGObject& a, const LOGAppenderSkeleton& b) {
    return a.operator==(b);
  }
  friend int operator!=(const LOGObject& a, const LOGAppenderSkeleton& b) {
    return a.operator!=(b);
  }

 protected:
  /// Says in the diagnostics that an event was refused.
  void reportClosed() const;

  LOGLayout* layout() const { return m_layout; }
  /// The event's text, copied under the layout's lock, because layouts may be shared. Rendering a
  /// message may run any code of the application, also code that closes this appender.
  static I18NString format(LOGLayout& layout, LOGLoggingEvent* event);
  /// The same into a string whose room is used again and again.
  static void format(LOGLayout& layout, LOGLoggingEvent* event, I18NString& text);

  I18NString m_name;
  std::atomic<int> m_closed{0};
  ZEBSharedPointer<LOGFilter> m_tailFilter;
  ZEBSharedPointer<LOGFilter> m_headFilter;
  // Changed under the appender's lock and m_errorHandlerAccess, read under either.
  ZEBOwnedPointer<LOGErrorHandler> m_errorHandler;
  ZEBSharedPointer<LOGLayout> m_layout;
  ZEBSharedPointer<const LOGLevel> m_threshold;
  std::atomic<int> m_stale{0};
  std::atomic<bool> m_closeRequested{false};  // set by close()
  /// Counts beginnings and ends of the times in which the holder of the lock has closed the
  /// appender only to open it again, so it is odd meanwhile: others then wait for the lock instead
  /// of finding it closed.
  std::atomic<std::uint64_t> m_reopenings{0};
  std::atomic<const ZEBForkGate::ThreadRecord*> m_reopener{nullptr};  // who began the last one
  /// Whether such a time has begun by that count, on a thread that no fork has left behind since.
  bool isReopening(std::uint64_t count) const {
    return count % 2 != 0 && !m_reopener.load()->isLost();
  }
  /// Whether it is closed, and not only to be opened again. Takes no lock.
  bool isClosedToAll() const {
    if (m_closed != 1) {
      return false;
    }
    const std::uint64_t before = m_reopenings;
    return m_closed == 1 && !isReopening(before) && m_reopenings == before;
  }

 protected:
  /// Puts a handler, which may be null, in place of the one there, and returns that. Called under
  /// the appender's lock.
  std::unique_ptr<LOGErrorHandler> exchangeErrorHandler(std::unique_ptr<LOGErrorHandler> handler);

 private:
  void appendLocked(LOGLoggingEvent* event);
  bool filtersLetPass(LOGLoggingEvent* event) const;
  std::unique_ptr<LOGErrorHandler> cloneOfErrorHandler() const;
  bool hasEqualErrorHandler(const LOGAppenderSkeleton& other) const;

  // A leaf, for those who compare appenders and cannot wait for one that is at work.
  mutable ZEBThreadCriticalSection m_errorHandlerAccess;
};

#endif
