#ifndef TOOL_HTML_RATE_SAMPLES_H
#define TOOL_HTML_RATE_SAMPLES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// How many records were handled in each stretch of a run, in memory that does not grow with its
// length: when there are too many stretches, each two neighbours become one, and the stretches that
// follow are twice as long.
class RateSamples {
  public:
    static constexpr std::size_t kSamplesKept = 240;
    static constexpr double kFirstStep = 0.05;  // seconds

    struct Sample {
        double from = 0;  // seconds since the start
        double to = 0;
        std::uint64_t records = 0;  // handled in between

        double Rate() const { return static_cast<double>(records) / (to - from); }
    };

    // Says that `records` have been handled `seconds` after the start, both counted from the start.
    // May be called for every record.
    void Add(double seconds, std::uint64_t records);

    // Closes the last stretch, which may be shorter than the others.
    void Finish(double seconds, std::uint64_t records);

    const std::vector<Sample>& Samples() const { return m_samples; }

  private:
    void Close(double seconds, std::uint64_t records);
    void MergeNeighbours();

    double m_step = kFirstStep;
    double m_begin = 0;
    std::uint64_t m_before = 0;
    std::vector<Sample> m_samples;
};

}  // namespace tool

#endif
