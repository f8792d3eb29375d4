#ifndef TOOL_SOURCES_MAPPED_KEY_FILTER_H
#define TOOL_SOURCES_MAPPED_KEY_FILTER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// Says of most keys for certain that they come for the first time, in memory that does not grow
// (a Bloom filter, each of whose keys stays within one line of the processor's cache). Up to some
// ten millions of keys it says so of nearly all that are new.
class KeyFilter {
  public:
    KeyFilter() : m_blocks(kBlocks) {}

    // Notes a key by its hash. False when it certainly comes for the first time.
    bool MayHave(std::uint64_t hash) {
        Block& block = m_blocks[hash % kBlocks];
        // Bits that do not follow from those that choose the block.
        std::uint64_t bits = hash * kOdd;
        bool isKnown = true;
        for (std::uint64_t& word : block) {
            const std::uint64_t bit = std::uint64_t{1} << (bits >> kTopBits);
            bits <<= 64 - kTopBits;
            isKnown = isKnown && (word & bit) != 0;
            word |= bit;
        }
        return isKnown;
    }

  private:
    using Block = std::array<std::uint64_t, 8>;
    static constexpr std::size_t kBlocks = std::size_t{1} << 18U;  // of 64 bytes each
    static constexpr unsigned kTopBits = 58;                       // the six above choose a bit
    static constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U;

    std::vector<Block> m_blocks;
};

}  // namespace tool

#endif
