#ifndef RECORDDB_SHA256_H
#define RECORDDB_SHA256_H

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "recorddb/export.h"

namespace recorddb {

// The SHA-256 of content that is given piece by piece.
class RECORDDB_API Sha256 {
  public:
    // Throws std::runtime_error when the cryptographic library refuses to work.
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Update(std::span<const std::byte> piece);
    void Update(std::string_view piece) { Update(std::as_bytes(std::span(piece))); }

    // The hash of the pieces so far, as 32 bytes. Further pieces may follow.
    std::array<std::byte, 32> DigestSoFar() const;

    // The hash of all pieces as 64 lower-case hex digits. No piece may follow.
    std::string HexDigest();

  private:
    struct Context;
    std::unique_ptr<Context> m_context;
};

}  // namespace recorddb

#endif
