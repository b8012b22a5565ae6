#include "bench/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>

#include "core/LOGManager.h"

namespace {

std::atomic<bool> g_isCounting{false};
std::atomic<long> g_allocations{0};
std::atomic<long> g_bytes{0};

void count(std::size_t bytes) {
  if (g_isCounting.load(std::memory_order_relaxed)) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    g_bytes.fetch_add(static_cast<long>(bytes), std::memory_order_relaxed);
  }
}

void* checked(void* memory) {
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

// All other forms of new and delete come down to these.

void* operator new(std::size_t bytes) {
  count(bytes);
  return checked(std::malloc(bytes == 0 ? 1 : bytes));
}

void* operator new(std::size_t bytes, std::align_val_t alignment) {
  count(bytes);
  const std::size_t unit = static_cast<std::size_t>(alignment);
  return checked(std::aligned_alloc(unit, (bytes + unit - 1) / unit * unit));
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

void AllocationCounter::start() {
  g_allocations = 0;
  g_bytes = 0;
  g_isCounting = true;
}

AllocationCounter::Count AllocationCounter::stop() {
  g_isCounting = false;
  return {g_allocations, g_bytes};
}

void AllocationCounter::requireThatLibraryIsCounted() {
  const I18NString name("allocationcounter");
  start();
  LOGManager::getLogger(name);  // makes a logger, which the shared object allocates
  if (stop().allocations == 0) {
    std::cerr << "allocations within the library are not counted\n";
    std::exit(1);
  }
}
