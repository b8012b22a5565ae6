#ifndef BENCH_MEASUREDPART_H
#define BENCH_MEASUREDPART_H

#include <functional>

/// Runs `operation` so many times. A tool that counts instructions is told this function's name, to
/// count what happens within it on the thread that calls it.
void measuredPart(const std::function<void()>& operation, int times);

#endif
