#ifndef PLATFORM_ZEBTHREAD_H
#define PLATFORM_ZEBTHREAD_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/ZEBThreadRunnable.h"

/// A thread of the operating system that runs a ZEBThreadRunnable, by default its own run().
class LOG4ZEB_EXPORT ZEBThread : public ZEBThreadRunnable {
 public:
  /// A thread that will run its own run(), to be overridden. `stackSize` is in bytes; 0 leaves the
  /// choice to the operating system.
  explicit ZEBThread(std::size_t stackSize = 0);
  /// A thread that will run `runnable`, which is not owned and must outlive the thread's run.
  explicit ZEBThread(ZEBThreadRunnable* runnable, std::size_t stackSize = 0);
  ZEBThread(const ZEBThread&) = delete;
  ZEBThread& operator=(const ZEBThread&) = delete;
  /// Waits for the thread's end. A class that overrides run() must have called join() in its own
  /// destructor, because its part of the object is gone by now.
  ~ZEBThread() override;

  /// Starts the thread; it can be started once, and once more in the child of a fork, which has
  /// none of its parent's threads. Throws ZEBSystemError when the operating system gives no thread.
  void start();
  /// Waits until the thread has ended; returns at once when it was not started, was joined before,
  /// or is the calling thread.
  void join();

  /// Does nothing here.
  void run() override;

  /// The operating system's number of the calling thread, as a debugger shows it.
  static std::uint64_t currentThreadId();
  /// Has `operation(argument)` called when the calling thread ends, among the destructors of its
  /// thread_local objects, the latest first; from one of these, it is called next.
  static void atEnd(void (*operation)(void*), void* argument);
  /// Has these called on each thread that forks, where the system has forks; returns whether it
  /// has.
  static bool watchForks(void (*before)(), void (*afterInParent)(), void (*afterInChild)());
  /// Pauses the calling thread.
  static void sleep(unsigned int milliseconds);

 private:
  class Handle;  // the operating system's side

  ZEBThreadRunnable* m_runnable;
  std::size_t m_stackSize;
  std::unique_ptr<Handle> m_handle;
};

#endif
