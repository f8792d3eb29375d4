#ifndef BENCH_RUN_H
#define BENCH_RUN_H

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// What something took.
struct Run {
    double seconds = 0;           // from start to end, on the clock
    double processorSeconds = 0;  // user and system time of the program
    double serverSeconds = 0;     // the same of the database's server, where there is one
    long peakKilobytes = 0;       // the program's largest resident memory

    // As much for each record, when this was for so many; memory stays.
    Run PerRecord(std::int64_t records) const;
};

// Runs a program to its end, its standard output thrown away. Throws std::runtime_error when it
// cannot be started or ends with anything but 0.
Run RunChild(const std::vector<std::string>& command);

// Time of this process since the watch was made.
class StopWatch {
  public:
    StopWatch();
    Run Taken() const;

  private:
    double m_start;
    double m_processorStart;
};

}  // namespace bench

#endif
