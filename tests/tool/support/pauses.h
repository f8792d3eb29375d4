#ifndef TESTS_TOOL_PAUSES_H
#define TESTS_TOOL_PAUSES_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace tool {

// Lets other threads go first, some times more often than at others.
inline std::function<void()> Pauses(std::uint64_t seed) {
    return [count = std::make_shared<std::atomic<std::uint64_t>>(seed)] {
        constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
        const std::uint64_t chance = (count->fetch_add(1) * factor) >> 58U;
        for (std::uint64_t i = 0; i < chance * chance / 8; ++i) {
            std::this_thread::yield();
        }
    };
}

}  // namespace tool

#endif
