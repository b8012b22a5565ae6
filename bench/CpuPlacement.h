#ifndef BENCH_CPUPLACEMENT_H
#define BENCH_CPUPLACEMENT_H

/// Where the threads of this process run, and a mark for who watches its system calls.
class CpuPlacement {
 public:
  /// Leaves the first processor that the process may use to the calling thread, and the second to
  /// all its other threads, those that they start included. Throws std::system_error, also when
  /// there is one processor only.
  static void setCallerApart();
  /// A system call that nothing else here makes: who traces the process tells by it where the
  /// measured part begins and ends, and which thread is the caller.
  static void markForTracer();
};

#endif
