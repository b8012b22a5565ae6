#ifndef BENCH_ALLOCATIONCOUNTER_H
#define BENCH_ALLOCATIONCOUNTER_H

/// Counts what the whole process, shared libraries included, takes through operator new. A program
/// that links this has operator new replaced; while nothing is counted that costs one test.
class AllocationCounter {
 public:
  struct Count {
    long allocations;
    long bytes;
  };

  /// Begins to count at 0.
  static void start();
  /// What was taken since start(), by any thread.
  static Count stop();
  /// Ends the program unless an allocation within the library's shared object is counted.
  static void requireThatLibraryIsCounted();
};

#endif
