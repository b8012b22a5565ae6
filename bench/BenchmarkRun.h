#ifndef BENCH_BENCHMARKRUN_H
#define BENCH_BENCHMARKRUN_H

/// Runs the benchmarks that were registered, with the options of Google Benchmark on the command
/// line; compilers, flags and versions go into the output. Returns the exit code of the program.
int runBenchmarks(int argumentCount, char** arguments);

#endif
