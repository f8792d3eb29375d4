#include "tool/html/rate_samples.h"

namespace tool {

void RateSamples::Add(double seconds, std::uint64_t records) {
    if (seconds - m_begin >= m_step) {
        Close(seconds, records);
    }
}

void RateSamples::Finish(double seconds, std::uint64_t records) {
    // What is left over is too short for a rate of its own that means anything.
    if (!m_samples.empty() && seconds - m_begin < m_step / 2) {
        m_samples.back().to = seconds;
        m_samples.back().records += records - m_before;
    } else if (seconds > m_begin) {
        Close(seconds, records);
    }
}

void RateSamples::Close(double seconds, std::uint64_t records) {
    m_samples.push_back({m_begin, seconds, records - m_before});
    m_begin = seconds;
    m_before = records;
    if (m_samples.size() == kSamplesKept) {
        MergeNeighbours();
    }
}

void RateSamples::MergeNeighbours() {
    std::vector<Sample> merged;
    for (std::size_t i = 0; i + 1 < m_samples.size(); i += 2) {
        const Sample& left = m_samples[i];
        const Sample& right = m_samples[i + 1];
        merged.push_back({left.from, right.to, left.records + right.records});
    }
    m_samples = std::move(merged);
    m_step *= 2;
}

}  // namespace tool
