#include "tool/io/decoding_marks.h"

#include <algorithm>

namespace tool {

namespace {

bool IsMark(char c) {
    return static_cast<unsigned char>(c) >= NulMark;
}

// A reduction without an early way out, which compilers turn into vector code.
bool HoldsMark(std::string_view text) {
    unsigned char highest = 0;
    for (char c : text) {
        highest = std::max(highest, static_cast<unsigned char>(c));
    }
    return highest >= NulMark;
}

}  // namespace

std::size_t FindDecodingMark(std::string_view text) {
    constexpr std::size_t block = 4096;
    for (std::size_t begin = 0; begin < text.size(); begin += block) {
        std::string_view part = text.substr(begin, block);
        if (HoldsMark(part)) {
            auto found = std::find_if(part.begin(), part.end(), IsMark);
            return begin + static_cast<std::size_t>(found - part.begin());
        }
    }
    return std::string_view::npos;
}

std::string_view DescribeDecodingMark(char mark) {
    switch (static_cast<unsigned char>(mark)) {
        case NulMark:
            return "a NUL character";
        case SurrogateMark:
            return "an unpaired UTF-16 surrogate";
        case OddByteMark:
            return "half a UTF-16 character at the end";
        default:
            return "a byte that is not UTF-8";
    }
}

std::string ReplaceDecodingMarks(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string result;
    result.reserve(text.size());
    for (char c : text) {
        if (IsMark(c)) {
            result += replacement;
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace tool
