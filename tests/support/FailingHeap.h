#ifndef TESTS_SUPPORT_FAILINGHEAP_H
#define TESTS_SUPPORT_FAILINGHEAP_H

/// The heap of a test program whose allocations can be made to fail, for all threads: every form of
/// operator new, the library's calls of malloc and the memory of its XML reader. An executable that
/// has this file, and tells the linker so, replaces all of them.
class FailingHeap {
 public:
  enum class Mode {
    One,      // the n-th allocation fails
    AllFrom,  // and so do all after it: the heap is exhausted
  };

  /// Counting from 1.
  static void fail(long nth, Mode mode);
  /// Ends that. Returns whether any allocation has failed.
  static bool end();
  /// How many allocations live.
  static long live();
};

#endif
