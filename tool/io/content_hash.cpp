#include "tool/io/content_hash.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <new>
#include <span>
#include <stdexcept>

namespace tool {

namespace {

void RequireHashed(int result) {
    if (result != 1) {
        throw std::runtime_error("BLAKE2b is not available from the cryptographic library");
    }
}

}  // namespace

struct ContentHash::Context {
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };

    std::unique_ptr<EVP_MD_CTX, Free> handle{EVP_MD_CTX_new()};
};

ContentHash::ContentHash() : m_context(std::make_unique<Context>()) {
    if (m_context->handle == nullptr) {
        throw std::bad_alloc();
    }
    RequireHashed(EVP_DigestInit_ex(m_context->handle.get(), EVP_blake2b512(), nullptr));
}

ContentHash::~ContentHash() = default;

void ContentHash::Update(std::string_view piece) {
    RequireHashed(EVP_DigestUpdate(m_context->handle.get(), piece.data(), piece.size()));
}

std::string ContentHash::HexDigest() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    RequireHashed(EVP_DigestFinal_ex(m_context->handle.get(), digest.data(), &size));
    std::string hex;
    for (const unsigned char byte : std::span(digest).first(size)) {
        hex += fmt::format("{:02x}", byte);
    }
    return hex;
}

}  // namespace tool
