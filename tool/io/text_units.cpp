#include "tool/io/text_units.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "tool/io/decoding_marks.h"

namespace tool {

namespace {

std::uint8_t Byte(char c) {
    return static_cast<std::uint8_t>(c);
}

constexpr std::uint64_t kOnes = 0x0101010101010101U;
constexpr std::uint64_t kHighs = 0x8080808080808080U;

std::uint64_t Word(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// A word in which the high bit is set of each byte that is not 01 to 7F in `word`: a NUL byte
// borrows when 1 is taken away. Bits above the lowest one that is set may be wrong.
std::uint64_t OddBytes(std::uint64_t word) {
    return (word | (word - kOnes)) & kHighs;
}

// The length of the run of bytes 01 to 7F at the start.
std::size_t PlainRun(const char* bytes, std::size_t size) {
    std::size_t at = 0;
    while (at + 32 <= size &&
           (OddBytes(Word(bytes + at)) | OddBytes(Word(bytes + at + 8)) |
            OddBytes(Word(bytes + at + 16)) | OddBytes(Word(bytes + at + 24))) == 0) {
        at += 32;
    }
    for (; at + 8 <= size; at += 8) {
        std::uint64_t odd = OddBytes(Word(bytes + at));
        if (odd != 0 && std::endian::native == std::endian::little) {
            return at + static_cast<std::size_t>(std::countr_zero(odd)) / 8;
        }
        if (odd != 0) {
            break;
        }
    }
    while (at < size && Byte(bytes[at]) - 1U < 0x7F) {
        ++at;
    }
    return at;
}

bool IsContinuation(char c) {
    return (Byte(c) & 0xC0U) == 0x80U;
}

// Lead and second byte together exclude what the lead alone cannot: overlong forms, surrogates and
// values beyond U+10FFFF.
bool MayFollow(std::uint8_t lead, std::uint8_t second) {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0 && second <= 0xBF;
        case 0xED:
            return second >= 0x80 && second <= 0x9F;
        case 0xF0:
            return second >= 0x90 && second <= 0xBF;
        case 0xF4:
            return second >= 0x80 && second <= 0x8F;
        default:
            return second >= 0x80 && second <= 0xBF;
    }
}

std::size_t SequenceLength(std::uint8_t lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return 4;
    }
    return 0;
}

struct Sequence {
    std::size_t length;  // bytes that belong together, valid or not
    bool complete;       // all bytes that the lead asks for are there or one of them is wrong
    bool valid;
};

Sequence ReadSequence(const char* bytes, std::size_t size) {
    std::uint8_t lead = Byte(bytes[0]);
    std::size_t wanted = SequenceLength(lead);
    if (wanted == 0) {
        return {1, true, false};
    }
    if (size < 2) {
        return {1, false, false};
    }
    if (!MayFollow(lead, Byte(bytes[1]))) {
        return {1, true, false};
    }
    for (std::size_t i = 2; i < wanted; ++i) {
        if (i == size) {
            return {i, false, false};
        }
        if (!IsContinuation(bytes[i])) {
            return {i, true, false};
        }
    }
    return {wanted, true, true};
}

std::uint16_t Unit(const char* bytes, bool bigEndian) {
    auto first = static_cast<std::uint16_t>(Byte(bytes[0]));
    auto second = static_cast<std::uint16_t>(Byte(bytes[1]));
    return static_cast<std::uint16_t>(bigEndian ? first << 8U | second : second << 8U | first);
}

char Low6(std::uint32_t value) {
    return static_cast<char>(0x80U | (value & 0x3FU));
}

void AppendCodePoint(std::uint32_t code, std::string& out) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0U | code >> 6U);
        out += Low6(code);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0U | code >> 12U);
        out += Low6(code >> 6U);
        out += Low6(code);
    } else {
        out += static_cast<char>(0xF0U | code >> 18U);
        out += Low6(code >> 12U);
        out += Low6(code >> 6U);
        out += Low6(code);
    }
}

bool IsHighSurrogate(std::uint16_t unit) {
    return (unit & 0xFC00U) == 0xD800U;
}
bool IsLowSurrogate(std::uint16_t unit) {
    return (unit & 0xFC00U) == 0xDC00U;
}

void AppendMark(DecodingMark mark, std::string& out, bool& marked) {
    out += static_cast<char>(mark);
    marked = true;
}

}  // namespace

std::size_t MarkInvalidUtf8(char* bytes, std::size_t size, bool last, bool& marked) {
    std::size_t at = 0;
    while (true) {
        at += PlainRun(bytes + at, size - at);
        if (at == size) {
            return at;
        }
        if (bytes[at] == '\0') {
            bytes[at++] = static_cast<char>(NulMark);
            marked = true;
            continue;
        }
        Sequence sequence = ReadSequence(bytes + at, size - at);
        if (!sequence.complete && !last) {
            return at;
        }
        if (!sequence.valid) {
            std::memset(bytes + at, ByteMark, sequence.length);
            marked = true;
        }
        at += sequence.length;
    }
}

std::size_t AppendUtf16(std::string_view bytes, bool bigEndian, bool last, std::string& out,
                        bool& marked) {
    std::size_t at = 0;
    for (; at + 2 <= bytes.size(); at += 2) {
        std::uint16_t unit = Unit(bytes.data() + at, bigEndian);
        if (unit == 0) {
            AppendMark(NulMark, out, marked);
        } else if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            AppendCodePoint(unit, out);
            // NOLINTNEXTLINE(bugprone-branch-clone): a half that comes first and one left alone.
        } else if (IsLowSurrogate(unit)) {
            AppendMark(SurrogateMark, out, marked);
        } else if (at + 4 > bytes.size()) {
            if (!last) {
                return at;
            }
            AppendMark(SurrogateMark, out, marked);
        } else if (std::uint16_t low = Unit(bytes.data() + at + 2, bigEndian);
                   IsLowSurrogate(low)) {
            AppendCodePoint(0x10000U + ((unit & 0x3FFU) << 10U) + (low & 0x3FFU), out);
            at += 2;
        } else {
            AppendMark(SurrogateMark, out, marked);
        }
    }
    if (last && at < bytes.size()) {
        AppendMark(OddByteMark, out, marked);
        ++at;
    }
    return at;
}

std::size_t CountUtf16Units(std::string_view text) {
    std::size_t units = 0;
    for (char c : text) {
        bool takesTwo = Byte(c) >= 0xF0 && Byte(c) < NulMark;
        units += static_cast<std::size_t>(!IsContinuation(c)) + static_cast<std::size_t>(takesTwo);
    }
    return units;
}

std::size_t CountLineEnds(std::string_view text) {
    // Compilers can count many bytes at a time as long as the sum fits a byte.
    constexpr std::size_t block = 255;
    std::size_t count = 0;
    while (!text.empty()) {
        std::uint8_t part = 0;
        for (char c : text.substr(0, block)) {
            part = static_cast<std::uint8_t>(part + (c == '\n' ? 1 : 0));
        }
        count += part;
        text.remove_prefix(std::min(block, text.size()));
    }
    return count;
}

}  // namespace tool
