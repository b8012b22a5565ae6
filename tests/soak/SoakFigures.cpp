#include "soak/SoakFigures.h"

#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

#if SOAK_UNDER_SANITIZER
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();  // its header is not everywhere
#else
#include <malloc.h>
#endif

namespace {

long entriesOf(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<long>(std::distance(begin(entries), end(entries)));
}

long liveHeapBytes() {
#if SOAK_UNDER_SANITIZER
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  malloc_trim(0);  // so that the resident size says something too
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<long>(heap.uordblks + heap.hblkhd);
#endif
}

}  // namespace

SoakFigures SoakFigures::now() {
  SoakFigures figures;
  figures.heapBytes = liveHeapBytes();
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  figures.residentBytes = pages * sysconf(_SC_PAGESIZE);
  figures.descriptors = entriesOf("/proc/self/fd") - 1;  // without the one that reads this
  figures.threads = entriesOf("/proc/self/task");
  return figures;
}

std::string SoakFigures::text() const {
  return "heap " + std::to_string(heapBytes / 1024) + " KiB, resident " +
         std::to_string(residentBytes / 1024) + " KiB, " + std::to_string(descriptors) +
         " descriptors, " + std::to_string(threads) + " threads";
}
