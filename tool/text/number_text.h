#ifndef TOOL_TEXT_NUMBER_TEXT_H
#define TOOL_TEXT_NUMBER_TEXT_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// Numbers as people read them.

// "1,234,567".
std::string Grouped(std::uint64_t number);

// "1 record", "1,234 records". `plural` is given for nouns that do not take an s.
std::string CountOf(std::uint64_t number, std::string_view noun, std::string_view plural = {});

// A length of time: "0.84 seconds", "12.3 seconds", "4 minutes 5 seconds", "2 hours 10 minutes".
std::string DurationText(double seconds);

// A rate: grouped from ten on, with one decimal below.
std::string RateText(double perSecond);

// "2026-11-21 05:08:40 UTC".
std::string UtcText(std::chrono::system_clock::time_point time);

// The same for programs: "2026-11-21T05:08:40Z".
std::string UtcAttribute(std::chrono::system_clock::time_point time);

}  // namespace tool

#endif
