#ifndef TOOL_IO_TEXT_HASH_H
#define TOOL_IO_TEXT_HASH_H

#include <string>
#include <string_view>

namespace tool {

// The SHA-256 digest of `text` as 64 lower-case hexadecimal digits.
std::string HashText(std::string_view text);

}  // namespace tool

#endif
