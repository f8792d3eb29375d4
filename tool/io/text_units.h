#ifndef TOOL_IO_TEXT_UNITS_H
#define TOOL_IO_TEXT_UNITS_H

#include <cstddef>
#include <string>
#include <string_view>

// The two decodings, over pieces of any size, and counts over decoded text. Decoding never fails:
// what is not text becomes marks (see decoding_marks.h).
namespace tool {

// Checks `bytes` as UTF-8 in place and puts a mark over each byte that is not valid and over each
// NUL. Returns the number of leading bytes that are done; the rest (at most three bytes) begins a
// sequence that is not complete yet and must stand in front of the next piece. With `last` nothing
// follows, so an incomplete sequence is invalid and all bytes are done. Sets `marked` when a mark
// was put.
std::size_t MarkInvalidUtf8(char* bytes, std::size_t size, bool last, bool& marked);

// Appends `bytes`, UTF-16 in the given byte order, to `out` as UTF-8. Returns the number of leading
// bytes used; the rest (at most three bytes) must stand in front of the next piece. With `last` all
// bytes are used. Sets `marked` when a mark was put.
std::size_t AppendUtf16(std::string_view bytes, bool bigEndian, bool last, std::string& out,
                        bool& marked);

// The number of UTF-16 units that the decoded `text` stands for, a mark counting as one.
std::size_t CountUtf16Units(std::string_view text);

// The number of LF characters in `text`.
std::size_t CountLineEnds(std::string_view text);

}  // namespace tool

#endif
