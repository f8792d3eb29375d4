#ifndef TOOL_IO_DECODING_MARKS_H
#define TOOL_IO_DECODING_MARKS_H

#include <cstddef>
#include <string>
#include <string_view>

// Text that comes from the decoder is UTF-8, except that each source unit (a byte of UTF-8, a
// 16-bit unit of UTF-16) that is not text is replaced by one mark: a byte that no UTF-8 text holds.
// So an error needs no list beside the text, stays with the record it stands in however the text is
// cut, and the place in the source can be computed from the text alone.
namespace tool {

enum DecodingMark : unsigned char {
    NulMark = 0xF8,        // a NUL character
    ByteMark = 0xF9,       // a byte that is no part of a valid UTF-8 sequence
    SurrogateMark = 0xFA,  // half of a UTF-16 surrogate pair without the other half
    OddByteMark = 0xFB,    // the single byte at the end of a UTF-16 text of odd length
};

// Position of the first mark in `text`, or std::string_view::npos. Reads every byte once.
std::size_t FindDecodingMark(std::string_view text);

// What the mark stands for, such as "a byte that is not UTF-8".
std::string_view DescribeDecodingMark(char mark);

// `text` with U+FFFD in the place of each mark: valid UTF-8.
std::string ReplaceDecodingMarks(std::string_view text);

}  // namespace tool

#endif
