#ifndef BENCH_WORKLOAD_H
#define BENCH_WORKLOAD_H

#include <string_view>

// Some of the libraries take a format string only as a literal.
#define WORKLOAD_MESSAGE "order 4711 of customer 0815 was stored after 3 tries in 7 ms"
#define WORKLOAD_FORMAT "order {} of customer 0815 was stored after 3 tries in 7 ms"

/// The work that is the same for the library and its peers: one event at INFO, which becomes a line
/// of date, thread, level, logger and message, about 110 bytes in all.
namespace workload {

/// Three levels below the root.
inline constexpr const char* LOGGER = "app.db.tx";
inline constexpr const char* MESSAGE = WORKLOAD_MESSAGE;
/// With this number WORKLOAD_FORMAT makes MESSAGE.
inline constexpr int NUMBER = 4711;
static_assert(std::string_view(MESSAGE).size() == 60);

inline constexpr const char* PATTERN = "%d [%t] %p %c - %m%n";

/// What a rolling file may hold before it becomes a backup, and how many backups are kept.
inline constexpr int ROLL_AT_BYTES = 1048576;
inline constexpr int BACKUPS = 5;

inline constexpr int FILE_BUFFER_BYTES = 65536;

inline constexpr int QUEUE_EVENTS = 8192;
/// So many events at once find room in the queue, whether or not its thread takes any out.
inline constexpr int BURST_EVENTS = QUEUE_EVENTS / 2;

}  // namespace workload

#endif
