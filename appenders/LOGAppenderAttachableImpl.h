#ifndef APPENDERS_LOGAPPENDERATTACHABLEIMPL_H
#define APPENDERS_LOGAPPENDERATTACHABLEIMPL_H

#include <atomic>
#include <functional>
#include <optional>
#include <vector>

#include "appenders/LOGAppenderAttachable.h"
#include "core/LOGMutex.h"
#include "platform/ZEBThreadGuard.h"

class LOGAppenderPin;
class LOGHashtable;
class LOGLoggingEvent;

/// An ordered list of appenders, which it does not own. It carries a lock for its users; the
/// operations take none that a caller can notice, and the owner of the list serialises all of them
/// but isAttached(). An appender may add and remove appenders, itself included, while an event is
/// passed to the list.
///
/// A removal from outside of all calls that log, and without a lock, waits until no other thread
/// uses what it has removed: then the appender may be deleted. Any other removal takes effect
/// without waiting.
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
  /// Closes all appenders and empties the list; what a close() throws is passed on at the end.
  void removeAllAppenders() override { removeAllAppenders(nullptr); }
  /// The same; an appender that `appenderBag` has under its name also becomes stale. Null is
  /// allowed.
  void removeAllAppenders(LOGHashtable* appenderBag);
  /// Removes the first appender of that name; it is not closed.
  void removeAppender(const I18NString& name) override;
  /// Removes every appender that is the same; none is closed. Throws ZEBAssertError when `appender`
  /// is null and the list is not empty.
  void removeAppender(LOGAppenderSkeleton* appender) override;
  // The same for an owner who calls them under its lock, and awaitUsers() when it has left that.
  /// What a removal has taken out.
  struct Removed {
    LOGAppenderSkeleton* appender = nullptr;  // null where it may be another one, or several
    bool isAny = false;                       // somebody may use something that was here
    bool wasThere = false;
    bool isOfClaim = false;  // a claim was revoked, on an appender that may be in use
  };
  Removed takeOut(const I18NString& name);
  Removed takeOut(LOGAppenderSkeleton* appender);
  /// Waits, where the calling thread may, until no other thread uses what was taken out.
  void awaitUsers(const Removed& removed) const;

  /// Puts `live` in the place of `old`, so that an event that is being passed to the list meets the
  /// one or the other. Where `live` is there already, only removes `old`.
  void replaceAppender(const LOGAppenderSkeleton& old, LOGAppenderSkeleton& live);

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
  /// those that refuse the event, or were called, whichever is more. What activation throws is
  /// reported; what appending throws goes to the caller.
  int appendLoopOnAppenders(LOGLoggingEvent* event);
  /// The same for one of the list's appenders.
  static void append(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);

  /// Whether there is an appender. May be called without the owner's lock: an operation that
  /// changes the list shows here when it has come to its end.
  bool hasAppenders() const { return m_hasAppenders.load(std::memory_order_acquire); }
  /// The appenders as they are now. May be called without the owner's lock. An appender may be
  /// destroyed as soon as it is removed, so that none may be looked at unless it is known to stay.
  std::vector<LOGAppenderSkeleton*> snapshot() const;
  /// One of them by number, null beyond the last; under the owner's lock.
  LOGAppenderSkeleton* at(std::size_t position) const;
  /// Pins one of them by number and returns it, null beyond the last; the same.
  LOGAppenderSkeleton* pinAt(std::size_t position, LOGAppenderPin& pin) const;
  /// Calls `look` with each appender while the list cannot change; the same. It calls nothing that
  /// takes a lock.
  template <typename Look>
  void lookAtEach(Look look) const {
    const ZEBThreadGuard guard(m_access);
    for (const LOGAppenderSkeleton* const appender : m_appenderList) {
      look(*appender);
    }
  }
  /// Calls `operation` with each appender in order; the operation may change the list.
  template <typename Operation>
  void forEach(Operation operation) {
    for (Walk walk(*this); LOGAppenderSkeleton* const appender = walk.next();) {
      operation(*appender);
    }
  }

  class PinnedWalk;
  /// Forgets walks of threads that a fork has left behind. REQUIRES: called in the child, and not
  /// from within a walk over this list.
  void forgetWalks() noexcept { m_innermostWalk = nullptr; }

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
    bool isAtEnd() const { return m_next.atEnd(); }
    /// Tells the walk that the element at `position` goes away.
    void leave(Position position);

   private:
    friend class PinnedWalk;
    friend class LOGAppenderAttachableImpl;
    LOGAppenderAttachableImpl& m_list;
    Position m_next;
    Walk* m_outer;
  };

  void forgetVanishedThreads();
  Walk* innermostWalk();
  bool pinIfAttached(const LOGAppenderSkeleton& appender, LOGAppenderPin& pin) const;
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
  bool m_isBeingReplaced = false;                     // guarded by the owner's lock
  const ZEBForkGate::ThreadRecord* m_user = nullptr;  // who began the last walk or replacement
  mutable ZEBThreadCriticalSection m_access;
};

/// A walk over a list whose lock is held only to go from one appender to the next; the appender
/// that it has come to is pinned.
class LOGAppenderAttachableImpl::PinnedWalk {
 public:
  PinnedWalk(LOGAppenderAttachableImpl& list, LOGAppenderPin& pin);
  PinnedWalk(const PinnedWalk&) = delete;
  PinnedWalk& operator=(const PinnedWalk&) = delete;
  ~PinnedWalk();

  /// Null at the end.
  LOGAppenderSkeleton* appender() const noexcept { return m_appender; }
  /// Whether the list had no other appender when the walk began.
  bool isOnly() const noexcept { return m_isOnly; }
  void goOn();

 private:
  void pinNext();

  LOGAppenderAttachableImpl& m_list;
  LOGAppenderPin& m_pin;
  LOGAppenderSkeleton* m_appender = nullptr;
  bool m_isOnly = false;
  std::optional<Walk>
      m_walk;  // while there are further appenders; made and destroyed under the lock
};

#endif
