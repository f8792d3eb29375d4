#ifndef TOOL_CONTENT_HASH_H
#define TOOL_CONTENT_HASH_H

#include <filesystem>
#include <string>
#include <string_view>

#include "tool/byte_source.h"

namespace tool {

// SHA-256 digests as 64 lower-case hexadecimal digits.

// The digest of TEXT.
std::string HashText(std::string_view text);

// The digest of everything that BYTES still gives, read in constant memory.
std::string HashBytes(ByteSource& bytes);

// The digest of the file at PATH, called NAME in errors. Throws SourceError.
std::string HashFile(const std::filesystem::path& path, const std::string& name);

}  // namespace tool

#endif
