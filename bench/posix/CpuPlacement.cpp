#include "bench/CpuPlacement.h"

#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

void place(pid_t thread, int processor) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(static_cast<std::size_t>(processor), &set);
  if (::sched_setaffinity(thread, sizeof(set), &set) != 0) {
    throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
  }
}

int nextAllowed(const cpu_set_t& allowed, int processor) {
  while (processor < CPU_SETSIZE && !CPU_ISSET(static_cast<std::size_t>(processor), &allowed)) {
    ++processor;
  }
  return processor;
}

}  // namespace

void CpuPlacement::setCallerApart() {
  cpu_set_t allowed;
  if (::sched_getaffinity(0, sizeof(allowed), &allowed) != 0) {
    throw std::system_error(errno, std::generic_category(), "sched_getaffinity");
  }
  const int first = nextAllowed(allowed, 0);
  const int second = nextAllowed(allowed, first + 1);
  if (second >= CPU_SETSIZE) {
    throw std::system_error(EINVAL, std::generic_category(), "two processors are needed");
  }
  const pid_t caller = ::gettid();
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const pid_t thread = static_cast<pid_t>(std::stol(entry.path().filename().string()));
    place(thread, thread == caller ? first : second);
  }
}

void CpuPlacement::markForTracer() { static_cast<void>(::getppid()); }
