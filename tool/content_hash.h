#ifndef TOOL_CONTENT_HASH_H
#define TOOL_CONTENT_HASH_H

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "tool/byte_source.h"

namespace tool {

// SHA-256, fed piece by piece.
class ContentHash {
  public:
    // Throws std::runtime_error when the cryptographic library refuses to work.
    ContentHash();
    ~ContentHash();
    ContentHash(const ContentHash&) = delete;
    ContentHash& operator=(const ContentHash&) = delete;

    void Update(std::string_view bytes);

    // The digest of all pieces as 64 lower-case hexadecimal digits. Nothing may follow it.
    std::string HexDigest();

  private:
    struct Context;
    std::unique_ptr<Context> m_context;
};

// The digest of TEXT.
std::string HashText(std::string_view text);

// The digest of everything that BYTES still gives, read in constant memory.
std::string HashBytes(ByteSource& bytes);

// The digest of the file at PATH, called NAME in errors. Throws SourceError.
std::string HashFile(const std::filesystem::path& path, const std::string& name);

}  // namespace tool

#endif
