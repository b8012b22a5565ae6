#ifndef PLATFORM_ZEBFORKHANDLER_H
#define PLATFORM_ZEBFORKHANDLER_H

#include <new>

/// Has an object of the library put itself right in the child of a fork, where the threads that it
/// knew do not exist. It is the last member of its object, so that nobody is called who is only
/// half there.
class ZEBForkHandler {
 public:
  /// Runs in the child, before anything else does. It neither waits for a lock nor calls code of
  /// the application.
  using Renew = void (*)(void* object);
  /// Runs in the parent before the fork. It neither calls code of the application nor waits long
  /// for a lock, and makes or destroys no handler.
  using Prepare = void (*)(void* object) noexcept;

  ZEBForkHandler(void* object, Renew renew, Prepare prepare = nullptr);
  ZEBForkHandler(const ZEBForkHandler&) = delete;
  ZEBForkHandler& operator=(const ZEBForkHandler&) = delete;
  ~ZEBForkHandler();

  /// Makes a mutex or a condition variable anew in the child. The old one counts threads of the
  /// parent; what it holds on to is left alone.
  template <typename Primitive>
  static void renew(Primitive& primitive) {
    new (&primitive) Primitive;
  }

  // Called by ZEBForkGate.
  static void beforeFork() noexcept;
  static void afterForkInParent() noexcept;
  static void afterForkInChild() noexcept;

 private:
  void* const m_object;
  const Renew m_renew;
  const Prepare m_prepare;
  ZEBForkHandler* m_previous = nullptr;
  ZEBForkHandler* m_next;
};

#endif
