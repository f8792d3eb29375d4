#ifndef BENCH_CHILD_RUN_H
#define BENCH_CHILD_RUN_H

#include <string>
#include <vector>

namespace bench {

struct ChildRun {
    double seconds = 0;           // from start to end, on the clock
    double processorSeconds = 0;  // user and system time
    long peakKilobytes = 0;       // largest resident memory
};

// Runs a program to its end, its standard output thrown away. Throws std::runtime_error when it
// cannot be started or ends with anything but 0.
ChildRun RunChild(const std::vector<std::string>& command);

}  // namespace bench

#endif
