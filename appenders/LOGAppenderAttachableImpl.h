#ifndef APPENDERS_LOGAPPENDERATTACHABLEIMPL_H
#define APPENDERS_LOGAPPENDERATTACHABLEIMPL_H

#include <atomic>
#include <vector>

#include "appenders/LOGAppenderAttachable.h"
#include "core/LOGMutex.h"

class LOGHashtable;
class LOGLoggingEvent;

/// An ordered list of appenders, which it does not own. It carries a lock for its users; the
/// operations take none that a caller can notice, and the owner of the list serialises all of them
/// but isAttached(). An appender may add and remove appenders, itself included, while an event is
/// passed to the list.
///
/// Appenders count as the same when LOGAppenderSkeleton::operator== says so.
class LOG4ZEB_EXPORT LOGAppenderAttachableImpl : public LOGAppenderAttachable, public LOGMutex {
 public:
  LOGAppenderAttachableImpl();
  LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other);
  LOGAppenderAttachableImpl& operator=(const LOGAppenderAttachableImpl& other);
  ~LOGAppenderAttachableImpl() override;

  /// Adds at the end, unless the same appender is there. Throws ZEBAssertError when it is null.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  /// The first position of the live list.
  ZEBListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  /// The first appender of that name, or null.
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  /// 1 or 0. Throws ZEBAssertError when `appender` is null and the list is not empty.
  int isAttached(LOGAppenderSkeleton* appender) override;
  /// Closes all appenders and empties the list.
  void removeAllAppenders() override;
  /// The same; an appender that `appenderBag` has under its name also becomes stale. Null is
  /// allowed.
  void removeAllAppenders(LOGHashtable* appenderBag);
  /// Removes the first appender of that name; it is not closed.
  void removeAppender(const I18NString& name) override;
  /// Removes every appender that is the same; none is closed. Throws ZEBAssertError when `appender`
  /// is null and the list is not empty.
  void removeAppender(LOGAppenderSkeleton* appender) override;

  /// Removes these very objects, without looking into them.
  void detach(const std::vector<LOGAppenderSkeleton*>& appenders);

  /// While one lives, other appenders take the place of those in the list: removeAllAppenders()
  /// closes none, and hasAppenders() answers as before. Lives under the owner's lock.
  class LOG4ZEB_EXPORT Replacement {
   public:
    explicit Replacement(LOGAppenderAttachableImpl& list);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement();

   private:
    LOGAppenderAttachableImpl& m_list;
  };

  /// Activates every appender and has it append the event; returns how many are in the list, also
  /// those that refuse the event. What activation throws is reported; what appending throws goes
  /// to the caller.
  int appendLoopOnAppenders(LOGLoggingEvent* event);

  /// Whether there is an appender. May be called without the owner's lock: an operation that
  /// changes the list shows here when it has come to its end.
  bool hasAppenders() const { return m_hasAppenders.load(std::memory_order_acquire); }
  /// How many appenders there are, and the first of them, which must be there.
  std::size_t size() const { return m_appenderList.size(); }
  LOGAppenderSkeleton* first() const { return *m_appenderList.begin(); }
  /// The appenders as they are now. May be called without the owner's lock.
  std::vector<LOGAppenderSkeleton*> snapshot() const;
  /// Those of them that are wanted; the same. An appender may be destroyed as soon as it is
  /// removed, so that only here it is safe to look at any.
  std::vector<LOGAppenderSkeleton*> snapshot(bool (*isWanted)(const LOGAppenderSkeleton&)) const;
  /// One of them by number, null beyond the last; the same.
  LOGAppenderSkeleton* at(std::size_t position) const;
  /// Calls `operation` with each appender in order; the operation may change the list.
  template <typename Operation>
  void forEach(Operation operation) {
    for (Walk walk(*this); LOGAppenderSkeleton* const appender = walk.next();) {
      operation(*appender);
    }
  }

 private:
  using Position = ZEBListIterator<LOGAppenderSkeleton*>;

  /// A walk over the list that a removal moves on when it takes away the next element.
  class LOG4ZEB_EXPORT Walk {
   public:
    explicit Walk(LOGAppenderAttachableImpl& list);
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk();
    /// The next appender, null at the end.
    LOGAppenderSkeleton* next();
    /// Tells the walk that the element at `position` goes away.
    void leave(Position position);

   private:
    friend class LOGAppenderAttachableImpl;
    LOGAppenderAttachableImpl& m_list;
    Position m_next;
    Walk* m_outer;
  };

  void forgetVanishedThreads();
  Walk* innermostWalk();
  void remove(Position position);
  void add(LOGAppenderSkeleton* appender);
  void addUnlessThere(LOGAppenderSkeleton* newAppender);
  void clear();
  void publish();
  class Publishing;
  static void activate(LOGAppenderSkeleton& appender);

  std::atomic<bool> m_hasAppenders{false};
  // Changed by the owner of the list only, under m_access, which lets isAttached() read meanwhile.
  ZEBList<LOGAppenderSkeleton*> m_appenderList;
  ZEBListIterator<LOGAppenderSkeleton*> m_iterator;
  Walk* m_innermostWalk = nullptr;
  bool m_isBeingReplaced = false;  // guarded by the owner's lock
  unsigned m_epochOfThreads = 0;   // of the fork gate
  mutable ZEBThreadCriticalSection m_access;
};

#endif
