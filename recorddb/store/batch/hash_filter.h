#ifndef RECORDDB_STORE_BATCH_HASH_FILTER_H
#define RECORDDB_STORE_BATCH_HASH_FILTER_H

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

namespace recorddb {

// A set of hashes that only grows, in memory that has a bound: it never denies what was added, and
// affirms some that was not once it holds many: with the usual size, which takes 64 MiB, one hash
// in fifty thousand when it holds twenty millions, and one in eight when it holds a hundred.
class HashFilter {
  public:
    static constexpr std::size_t kUsualBits = std::size_t{1} << 29U;
    static constexpr std::size_t kUsualExact = 100'000;

    // It remembers the first `exact` hashes as they are, and from then on all in `bits` bits, which
    // are a power of two, 64 or more.
    explicit HashFilter(std::size_t bits = kUsualBits, std::size_t exact = kUsualExact)
        : m_bits(bits), m_most(exact) {}

    void Add(std::uint64_t hash);
    bool MayHave(std::uint64_t hash) const;

  private:
    void Mark(std::uint64_t hash);

    std::size_t m_bits;
    std::size_t m_most;
    std::unordered_set<std::uint64_t> m_exact;
    std::vector<std::uint64_t> m_words;  // empty while m_exact has all
};

}  // namespace recorddb

#endif
