#include "tool/text/number_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

std::tm Utc(std::chrono::system_clock::time_point time) {
    return fmt::gmtime(std::chrono::system_clock::to_time_t(time));
}

}  // namespace

std::string Grouped(std::uint64_t number) {
    const std::string digits = fmt::format("{}", number);
    std::string grouped;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            grouped += ',';
        }
        grouped += digits[i];
    }
    return grouped;
}

std::string CountOf(std::uint64_t number, std::string_view noun, std::string_view plural) {
    if (number == 1) {
        return fmt::format("1 {}", noun);
    }
    return plural.empty() ? fmt::format("{} {}s", Grouped(number), noun)
                          : fmt::format("{} {}", Grouped(number), plural);
}

std::string DurationText(double seconds) {
    // From here on a shorter form would round up to the next unit.
    if (seconds < 9.995) {
        return fmt::format("{:.2f} seconds", seconds);
    }
    if (seconds < 59.95) {
        return fmt::format("{:.1f} seconds", seconds);
    }
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    const std::uint64_t hours = whole / 3600;
    const std::string minutes = CountOf(whole / 60 % 60, "minute");
    return hours > 0 ? fmt::format("{} {}", CountOf(hours, "hour"), minutes)
                     : fmt::format("{} {}", minutes, CountOf(whole % 60, "second"));
}

std::string RateText(double perSecond) {
    const double rate = std::max(perSecond, 0.0);
    return rate < 9.95 ? fmt::format("{:.1f}", rate)
                       : Grouped(static_cast<std::uint64_t>(std::llround(rate)));
}

std::string UtcText(std::chrono::system_clock::time_point time) {
    return fmt::format("{:%Y-%m-%d %H:%M:%S} UTC", Utc(time));
}

std::string UtcAttribute(std::chrono::system_clock::time_point time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}Z", Utc(time));
}

}  // namespace tool
