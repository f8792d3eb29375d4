#include "recorddb/sha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace recorddb {

namespace {

void Check(int result) {
    if (result != 1) {
        throw std::runtime_error("SHA-256 is not available from the cryptographic library");
    }
}

}  // namespace

struct Sha256::Context {
    struct Free {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };
    using Handle = std::unique_ptr<EVP_MD_CTX, Free>;

    Handle handle{EVP_MD_CTX_new()};
};

Sha256::Sha256() : m_context(std::make_unique<Context>()) {
    Check(m_context->handle != nullptr ? 1 : 0);
    Check(EVP_DigestInit_ex(m_context->handle.get(), EVP_sha256(), nullptr));
}

Sha256::~Sha256() = default;

void Sha256::Update(std::span<const std::byte> piece) {
    Check(EVP_DigestUpdate(m_context->handle.get(), piece.data(), piece.size()));
}

std::array<std::byte, 32> Sha256::DigestSoFar() const {
    const Context::Handle copy{EVP_MD_CTX_new()};
    Check(copy != nullptr ? EVP_MD_CTX_copy_ex(copy.get(), m_context->handle.get()) : 0);
    std::array<std::byte, 32> digest{};
    Check(EVP_DigestFinal_ex(copy.get(), reinterpret_cast<unsigned char*>(digest.data()), nullptr));
    return digest;
}

std::string Sha256::HexDigest() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    Check(EVP_DigestFinal_ex(m_context->handle.get(), digest.data(), &size));
    std::string hex;
    for (const unsigned char byte : std::span(digest).first(size)) {
        hex += fmt::format("{:02x}", byte);
    }
    return hex;
}

}  // namespace recorddb
