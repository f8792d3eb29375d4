#include "recorddb/model/value_text.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace recorddb {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

int Number(std::string_view digits) {
    int number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

}  // namespace

std::optional<std::int64_t> IntegerOf(std::string_view text) {
    text = Trimmed(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stopped != end) {
        return std::nullopt;
    }
    return number;
}

bool IsStoredDateTime(std::string_view text) {
    constexpr std::string_view form = "0000-00-00 00:00:00";
    const auto fits = [](char given, char expected) {
        return expected == '0' ? given >= '0' && given <= '9' : given == expected;
    };
    if (text.size() != form.size() || !std::equal(text.begin(), text.end(), form.begin(), fits)) {
        return false;
    }
    const auto part = [text](std::size_t first, std::size_t length) {
        return Number(text.substr(first, length));
    };
    const std::chrono::year_month_day date(std::chrono::year(part(0, 4)),
                                           std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                           std::chrono::day(static_cast<unsigned>(part(8, 2))));
    return date.ok() && int(date.year()) >= 1 && part(11, 2) < 24 && part(14, 2) < 60 &&
           part(17, 2) < 60;
}

std::int64_t CharacterCount(std::string_view utf8) {
    return std::count_if(utf8.begin(), utf8.end(), [](char unit) {
        return (static_cast<unsigned char>(unit) & 0xC0U) != 0x80U;
    });
}

}  // namespace recorddb
