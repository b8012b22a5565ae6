#ifndef PLATFORM_ZEBTHREADPLACE_H
#define PLATFORM_ZEBTHREADPLACE_H

/// A place, for the rest of the process, where threads sleep until another one wakes them, with the
/// lock that what they wait for is looked at and changed under. Made of what the operating system
/// has for it.
class ZEBThreadPlace {
 public:
  ZEBThreadPlace();
  ZEBThreadPlace(const ZEBThreadPlace&) = delete;
  ZEBThreadPlace& operator=(const ZEBThreadPlace&) = delete;
  /// Throws std::system_error when the operating system refuses.
  void lock();
  void unlock() noexcept;
  /// Leaves the lock and sleeps, in one step, until it is woken, or now and then for no reason;
  /// then takes the lock again. REQUIRES: the calling thread holds the lock.
  void sleep();
  /// Wakes all that sleep here.
  void wakeAll() noexcept;

 private:
  class Handle;  // the operating system's side

  Handle* m_handle;
};

#endif
