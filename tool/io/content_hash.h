#ifndef TOOL_IO_CONTENT_HASH_H
#define TOOL_IO_CONTENT_HASH_H

#include <memory>
#include <string>
#include <string_view>

namespace tool {

// The BLAKE2b-512 hash of content that is given piece by piece: as hard to forge as SHA-256, in
// half its time where the processor has no instructions for that.
class ContentHash {
  public:
    // Throws std::runtime_error when the cryptographic library refuses to work.
    ContentHash();
    ~ContentHash();
    ContentHash(const ContentHash&) = delete;
    ContentHash& operator=(const ContentHash&) = delete;

    void Update(std::string_view piece);

    // The hash of all pieces as 128 lower-case hexadecimal digits. No piece may follow.
    std::string HexDigest();

  private:
    struct Context;
    std::unique_ptr<Context> m_context;
};

}  // namespace tool

#endif
