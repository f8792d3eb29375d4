#ifndef PLATFORM_FOUNDATION_TEXT_PLACE_H
#define PLATFORM_FOUNDATION_TEXT_PLACE_H

#include <algorithm>
#include <cstddef>
#include <string_view>

// A place in a text; line and column are counted from 0, the column in bytes.
struct TextPlace {
    int line;
    int column;
};

// The place of the byte at `offset`. Lines end at LF.
inline TextPlace PlaceInText(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    return {static_cast<int>(std::count(before.begin(), before.end(), '\n')),
            static_cast<int>(before.size() - (before.rfind('\n') + 1))};
}

#endif
