#include "recorddb/store/batch/hash_filter.h"

namespace recorddb {

namespace {

constexpr unsigned kMarks = 8;  // of one hash
constexpr unsigned kWordShift = 6;
constexpr std::uint64_t kWordMask = 63;

// The places of a hash's marks are `first`, `first + step` and so on.
struct Places {
    explicit Places(std::uint64_t hash) : first(hash), step(hash * 0x9E3779B97F4A7C15U) {
        constexpr unsigned half = 32;
        step = (step ^ (step >> half)) | 1U;
    }

    std::uint64_t first;
    std::uint64_t step;
};

}  // namespace

void HashFilter::Add(std::uint64_t hash) {
    if (!m_words.empty()) {
        Mark(hash);
        return;
    }
    m_exact.insert(hash);
    if (m_exact.size() <= m_most) {
        return;
    }
    m_words.resize(m_bits >> kWordShift);
    for (const std::uint64_t exact : m_exact) {
        Mark(exact);
    }
    m_exact = {};
}

void HashFilter::Mark(std::uint64_t hash) {
    const Places places(hash);
    for (unsigned i = 0; i < kMarks; ++i) {
        const std::uint64_t bit = (places.first + i * places.step) & (m_bits - 1);
        m_words[bit >> kWordShift] |= std::uint64_t{1} << (bit & kWordMask);
    }
}

bool HashFilter::MayHave(std::uint64_t hash) const {
    if (m_words.empty()) {
        return m_exact.contains(hash);
    }
    const Places places(hash);
    for (unsigned i = 0; i < kMarks; ++i) {
        const std::uint64_t bit = (places.first + i * places.step) & (m_bits - 1);
        if ((m_words[bit >> kWordShift] >> (bit & kWordMask) & 1U) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace recorddb
