#ifndef BENCH_SPREAD_H
#define BENCH_SPREAD_H

#include <vector>

#include "run.h"

namespace bench {

// Of values that scatter: the one in the middle, and both ends.
struct Spread {
    double median = 0;
    double lowest = 0;
    double highest = 0;
};

Spread SpreadOf(std::vector<double> values);

// Runs, each with one beside it in time of what it is compared with: what slows the machine down
// for a while reaches both.
class Pairs {
  public:
    void Add(const Run& base, const Run& run);

    // How many times the base the runs take, on the clock and of all processors.
    Spread OnTheClock() const;
    Spread OfProcessors() const;
    // The middle of each figure; of memory the largest.
    Run Typical() const;

  private:
    struct Pair {
        Run base;
        Run run;
    };

    template <typename Value>
    Spread Over(Value value) const;

    std::vector<Pair> m_pairs;
};

}  // namespace bench

#endif
