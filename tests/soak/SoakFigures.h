#ifndef SOAK_SOAKFIGURES_H
#define SOAK_SOAKFIGURES_H

#include <string>

/// What the process uses at a moment.
struct SoakFigures {
  static SoakFigures now();
  std::string text() const;

  long heapBytes = 0;  // taken and not given back
  long residentBytes = 0;
  long descriptors = 0;
  long threads = 0;
};

/// Whether a sanitizer watches; it keeps freed memory, so that the resident size says nothing.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SOAK_UNDER_SANITIZER 1
#else
#define SOAK_UNDER_SANITIZER 0
#endif

#endif
