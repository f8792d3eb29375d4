#ifndef BENCH_SERVER_TIME_H
#define BENCH_SERVER_TIME_H

#include <sys/types.h>

#include <filesystem>

namespace bench {

// The process that listens on a server's socket in `folder`. Throws std::runtime_error.
pid_t ServerBehind(const std::filesystem::path& folder);

// User and system time of a server so far, in seconds: of its first process and of all that this
// one has started, also of those that have ended.
double ServerSeconds(pid_t server);

}  // namespace bench

#endif
