#include "platform/ZEBThread.h"

#include <cxxabi.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <thread>

#include "platform/ZEBForkGate.h"
#include "platform/ZEBSystemError.h"

extern "C" void* __dso_handle;  // of this library; defined by the compiler

class ZEBThread::Handle {
 public:
  pthread_t thread{};
  const pid_t process = getpid();

  /// Whether the thread was left behind in the process that this one was forked from.
  bool isGone() const { return process != getpid(); }
};

namespace {

// Asking the kernel costs a system call, so each thread remembers its answer.
thread_local std::uint64_t t_threadId = 0;

/// The only thread of a forked child is a copy of the one that forked, with a new number.
[[maybe_unused]] const bool IS_WATCHING =
    ZEBThread::watchForks(nullptr, nullptr, [] { t_threadId = 0; });

LOG4ZEB_COLD void askForThreadId() { t_threadId = static_cast<std::uint64_t>(syscall(SYS_gettid)); }

void* runThread(void* argument) {
  try {
    static_cast<ZEBThreadRunnable*>(argument)->run();
  } catch (const abi::__forced_unwind&) {
    throw;  // a cancelled thread unwinds by an exception that must not be stopped
  } catch (...) {
    // The thread ends; its exception has nowhere to go, and the process lives on.
  }
  return nullptr;
}

}  // namespace

ZEBThread::ZEBThread(std::size_t stackSize) : m_runnable(this), m_stackSize(stackSize) {}

ZEBThread::ZEBThread(ZEBThreadRunnable* runnable, std::size_t stackSize)
    : m_runnable(runnable), m_stackSize(stackSize) {}

ZEBThread::~ZEBThread() {
  join();
  if (m_handle != nullptr && !m_handle->isGone()) {
    pthread_detach(m_handle->thread);  // the thread destroys its own object and cannot be awaited
  }
}

void ZEBThread::start() {
  if (m_handle != nullptr && !m_handle->isGone()) {
    return;
  }
  // Complete before the thread runs, which may ask for it.
  m_handle = std::make_unique<Handle>();
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  if (m_stackSize != 0) {
    pthread_attr_setstacksize(&attributes,
                              std::max(m_stackSize, static_cast<std::size_t>(PTHREAD_STACK_MIN)));
  }
  const int failed = pthread_create(&m_handle->thread, &attributes, &runThread, m_runnable);
  pthread_attr_destroy(&attributes);
  if (failed != 0) {
    m_handle.reset();
    throw ZEBSystemError("thread", failed, "ZEBThread::start", __LINE__);
  }
}

void ZEBThread::join() {
  if (m_handle == nullptr || pthread_equal(m_handle->thread, pthread_self()) != 0) {
    return;
  }
  if (!m_handle->isGone()) {
    const ZEBForkGate::BlockedScope blocked;
    pthread_join(m_handle->thread, nullptr);
  }
  m_handle.reset();
}

void ZEBThread::run() {}

std::uint64_t ZEBThread::currentThreadId() {
  if (t_threadId == 0) {
    askForThreadId();
  }
  return t_threadId;
}

void ZEBThread::atEnd(void (*operation)(void*), void* argument) {
  // What a compiler calls for a thread_local object.
  abi::__cxa_thread_atexit(operation, argument, &__dso_handle);
}

bool ZEBThread::watchForks(void (*before)(), void (*afterInParent)(), void (*afterInChild)()) {
  return pthread_atfork(before, afterInParent, afterInChild) == 0;
}

void ZEBThread::sleep(unsigned int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
