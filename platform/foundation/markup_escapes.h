#ifndef PLATFORM_FOUNDATION_MARKUP_ESCAPES_H
#define PLATFORM_FOUNDATION_MARKUP_ESCAPES_H

#include <array>
#include <string_view>

// A character that markup writes otherwise, and the sequence that stands for it there.
struct MarkupEscape {
    std::string_view sequence;
    char character;
};

// XML's own escapes, and the references to the white space that a parser would not leave as it is.
// That of "&" itself is the first one.
inline constexpr std::array<MarkupEscape, 8> kMarkupEscapes = {{{"&amp;", '&'},
                                                                {"&lt;", '<'},
                                                                {"&gt;", '>'},
                                                                {"&apos;", '\''},
                                                                {"&quot;", '"'},
                                                                {"&#x9;", '\t'},
                                                                {"&#xA;", '\n'},
                                                                {"&#xD;", '\r'}}};

// What stands for a character; nothing for one that needs no escape.
constexpr std::string_view MarkupEscapeOf(char character) {
    for (const MarkupEscape& escape : kMarkupEscapes) {
        if (escape.character == character) {
            return escape.sequence;
        }
    }
    return {};
}

#endif
