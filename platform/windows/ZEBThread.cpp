#include "platform/ZEBThread.h"

#include <cxxabi.h>
#include <process.h>
#include <windows.h>

#include <chrono>

#include "platform/ZEBSystemError.h"

extern "C" void* __dso_handle;  // of this library; defined by the compiler

class ZEBThread::Handle {
 public:
  HANDLE thread = nullptr;
  unsigned int id = 0;
};

namespace {

unsigned int __stdcall runThread(void* argument) {
  try {
    static_cast<ZEBThreadRunnable*>(argument)->run();
  } catch (...) {
    // The thread ends; its exception has nowhere to go, and the process lives on.
  }
  return 0;
}

}  // namespace

ZEBThread::ZEBThread(std::size_t stackSize) : m_runnable(this), m_stackSize(stackSize) {}

ZEBThread::ZEBThread(ZEBThreadRunnable* runnable, std::size_t stackSize)
    : m_runnable(runnable), m_stackSize(stackSize) {}

ZEBThread::~ZEBThread() {
  join();
  if (m_handle != nullptr) {
    CloseHandle(m_handle->thread);  // the thread destroys its own object and cannot be awaited
  }
}

void ZEBThread::start() {
  if (m_handle != nullptr) {
    return;
  }
  // Complete before the thread runs, which may ask for it: until then it is held back.
  m_handle = std::make_unique<Handle>();
  const auto thread =
      _beginthreadex(nullptr, static_cast<unsigned int>(m_stackSize), &runThread, m_runnable,
                     CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION, &m_handle->id);
  if (thread == 0) {
    const int error = static_cast<int>(GetLastError());
    m_handle.reset();
    throw ZEBSystemError("thread", error, "ZEBThread::start", __LINE__);
  }
  const auto handle = reinterpret_cast<HANDLE>(thread);
  m_handle->thread = handle;
  ResumeThread(handle);
}

void ZEBThread::join() {
  if (m_handle != nullptr && m_handle->id != GetCurrentThreadId()) {
    WaitForSingleObject(m_handle->thread, INFINITE);
    CloseHandle(m_handle->thread);
    m_handle.reset();
  }
}

void ZEBThread::run() {}

std::uint64_t ZEBThread::currentThreadId() { return GetCurrentThreadId(); }

void ZEBThread::atEnd(void (*operation)(void*), void* argument) {
  // What a compiler calls for a thread_local object.
  abi::__cxa_thread_atexit(operation, argument, &__dso_handle);
}

bool ZEBThread::watchForks(void (*)(), void (*)(), void (*)()) { return false; }

void ZEBThread::sleep(unsigned int milliseconds) {
  // The system may wake a thread a tick early.
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  for (auto left = end - Clock::now(); left.count() > 0; left = end - Clock::now()) {
    Sleep(static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
  }
}
