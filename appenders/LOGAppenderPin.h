#ifndef APPENDERS_LOGAPPENDERPIN_H
#define APPENDERS_LOGAPPENDERPIN_H

#include <atomic>

#include "platform/ZEBForkGate.h"

class LOGAppenderAttachable;
class LOGAppenderSkeleton;

/// Keeps one appender that was found in a list from being deleted while it is used without the
/// list's lock: who removes an appender waits for the pins that other threads have on it, unless
/// the removal is made under a lock or within a call that passes an event on. Lives on the stack of
/// the thread that uses the appender.
class LOGAppenderPin {
 public:
  /// Throws std::bad_alloc.
  LOGAppenderPin() : m_record(take()) {}
  LOGAppenderPin(const LOGAppenderPin&) = delete;
  LOGAppenderPin& operator=(const LOGAppenderPin&) = delete;
  ~LOGAppenderPin();

  /// Pins an appender of `list` in place of the one before. REQUIRES: `list` cannot change now.
  void set(const LOGAppenderAttachable& list, const LOGAppenderSkeleton& appender) noexcept;
  void clear() noexcept;

  /// Waits until no other thread uses the appender, which is in no list any more, or, with null,
  /// any of `list`, that it had pinned when this was called. Returns at once where the calling
  /// thread may not wait (see LOGCallScope).
  static void awaitOthers(const LOGAppenderAttachable* list, const LOGAppenderSkeleton* appender);

 private:
  /// Never destroyed, and used by one pin at a time.
  struct Record {
    std::atomic<const ZEBForkGate::ThreadRecord*> owner{nullptr};
    std::atomic<const LOGAppenderSkeleton*> appender{nullptr};
    std::atomic<const LOGAppenderAttachable*> list{nullptr};
    std::atomic<unsigned> uses{0};
    Record* next = nullptr;

    bool isOfOtherThread(const ZEBForkGate::ThreadRecord& self) const noexcept;
  };

  static Record& take();
  static std::atomic<Record*>& first();
  static const std::atomic<Record*>& s_first;  // has them made when the library is loaded

  Record& m_record;
};

#endif
