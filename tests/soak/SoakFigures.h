#ifndef SOAK_SOAKFIGURES_H
#define SOAK_SOAKFIGURES_H

#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();  // its header is not everywhere
#define SOAK_UNDER_SANITIZER 1
#else
#include <malloc.h>
#define SOAK_UNDER_SANITIZER 0
#endif

/// What the process uses at a moment.
struct SoakFigures {
  long heapBytes = 0;      // taken and not given back
  long residentBytes = 0;  // says nothing under a sanitizer, which keeps freed memory
  long descriptors = 0;
  long threads = 0;

  static SoakFigures now() {
    SoakFigures figures;
#if SOAK_UNDER_SANITIZER
    figures.heapBytes = static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
    // What is freed goes back to the system, so that the resident size says something.
    mallopt(M_TRIM_THRESHOLD, 64 * 1024);
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    figures.heapBytes = static_cast<long>(heap.uordblks + heap.hblkhd);
#endif
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    figures.residentBytes = pages * sysconf(_SC_PAGESIZE);
    figures.descriptors = entriesOf("/proc/self/fd") - 1;  // without the one that reads this
    figures.threads = entriesOf("/proc/self/task");
    return figures;
  }

  std::string text() const {
    return "heap " + std::to_string(heapBytes / 1024) + " KiB, resident " +
           std::to_string(residentBytes / 1024) + " KiB, " + std::to_string(descriptors) +
           " descriptors, " + std::to_string(threads) + " threads";
  }

 private:
  static long entriesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<long>(std::distance(begin(entries), end(entries)));
  }
};

#endif
