#include "support/FailingHeap.h"

#include <expat.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

// The linker leads calls of malloc to __wrap_malloc; this is the real one.
extern "C" void* __real_malloc(std::size_t bytes);

namespace {

constexpr long NEVER = -1;

std::atomic<long> g_nth{NEVER};
std::atomic<bool> g_andAllAfter{false};
std::atomic<long> g_asked{0};
std::atomic<long> g_failed{0};
std::atomic<long> g_live{0};

bool mustFail() {
  const long nth = g_nth;
  if (nth == NEVER) {
    return false;
  }
  const long number = ++g_asked;
  const bool fails = number == nth || (number > nth && g_andAllAfter);
  g_failed += fails ? 1 : 0;
  return fails;
}

void* counted(void* memory) {
  g_live += memory == nullptr ? 0 : 1;
  return memory;
}

void* allocate(std::size_t bytes) {
  return mustFail() ? nullptr : counted(__real_malloc(bytes == 0 ? 1 : bytes));
}

void release(void* memory) {
  g_live -= memory == nullptr ? 0 : 1;
  std::free(memory);
}

/// What malloc gave stands before the memory that is handed out.
void* allocateAligned(std::size_t bytes, std::align_val_t alignment) {
  const auto unit = static_cast<std::uintptr_t>(alignment);
  void* const whole = allocate(bytes + unit + sizeof(void*));
  if (whole == nullptr) {
    return nullptr;
  }
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(whole) + sizeof(void*);
  void** const memory = reinterpret_cast<void**>((first + unit - 1) / unit * unit);
  memory[-1] = whole;
  return memory;
}

void releaseAligned(void* memory) {
  if (memory != nullptr) {
    release(static_cast<void**>(memory)[-1]);
  }
}

void* orThrow(void* memory) {
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void FailingHeap::fail(long nth, Mode mode) {
  g_asked = 0;
  g_failed = 0;
  g_andAllAfter = mode == Mode::AllFrom;
  g_nth = nth;
}

bool FailingHeap::end() {
  g_nth = NEVER;
  return g_failed > 0;
}

long FailingHeap::live() { return g_live; }

using Align = std::align_val_t;

void* operator new(std::size_t n) { return orThrow(allocate(n)); }
void* operator new[](std::size_t n) { return orThrow(allocate(n)); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return allocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return allocate(n); }
void* operator new(std::size_t n, Align a) { return orThrow(allocateAligned(n, a)); }
void* operator new[](std::size_t n, Align a) { return orThrow(allocateAligned(n, a)); }
void* operator new(std::size_t n, Align a, const std::nothrow_t&) noexcept {
  return allocateAligned(n, a);
}
void* operator new[](std::size_t n, Align a, const std::nothrow_t&) noexcept {
  return allocateAligned(n, a);
}

void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete(void* memory, Align) noexcept { releaseAligned(memory); }
void operator delete[](void* memory, Align) noexcept { releaseAligned(memory); }
void operator delete(void* memory, std::size_t, Align) noexcept { releaseAligned(memory); }
void operator delete[](void* memory, std::size_t, Align) noexcept { releaseAligned(memory); }
void operator delete(void* memory, Align, const std::nothrow_t&) noexcept {
  releaseAligned(memory);
}
void operator delete[](void* memory, Align, const std::nothrow_t&) noexcept {
  releaseAligned(memory);
}

extern "C" {
void* __wrap_malloc(std::size_t bytes) { return mustFail() ? nullptr : __real_malloc(bytes); }

XML_Parser __wrap_XML_ParserCreate(const XML_Char* encoding) {
  static const XML_Memory_Handling_Suite SUITE = {allocate,
                                                  [](void* memory, std::size_t bytes) -> void* {
                                                    if (memory == nullptr) {
                                                      return allocate(bytes);
                                                    }
                                                    return mustFail() ? nullptr
                                                                      : std::realloc(memory, bytes);
                                                  },
                                                  release};
  return XML_ParserCreate_MM(encoding, &SUITE, nullptr);
}
}
