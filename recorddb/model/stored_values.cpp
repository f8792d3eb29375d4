#include "recorddb/model/stored_values.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace recorddb {

namespace {

int Number(std::string_view digits) {
    int number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

}  // namespace

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
