#include "tool/content_hash.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>
#include <vector>

namespace tool {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

void Check(int result) {
    if (result != 1) {
        throw std::runtime_error("SHA-256 is not available from the cryptographic library");
    }
}

}  // namespace

struct ContentHash::Context {
    std::unique_ptr<EVP_MD_CTX, FreeContext> handle{EVP_MD_CTX_new()};
};

ContentHash::ContentHash() : m_context(std::make_unique<Context>()) {
    Check(m_context->handle ? 1 : 0);
    Check(EVP_DigestInit_ex(m_context->handle.get(), EVP_sha256(), nullptr));
}

ContentHash::~ContentHash() = default;

void ContentHash::Update(std::string_view bytes) {
    Check(EVP_DigestUpdate(m_context->handle.get(), bytes.data(), bytes.size()));
}

std::string ContentHash::HexDigest() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    Check(EVP_DigestFinal_ex(m_context->handle.get(), digest.data(), &size));
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < size; ++i) {
        hex += digits[digest[i] >> 4U];
        hex += digits[digest[i] & 0x0FU];
    }
    return hex;
}

std::string HashText(std::string_view text) {
    ContentHash hash;
    hash.Update(text);
    return hash.HexDigest();
}

std::string HashBytes(ByteSource& bytes) {
    ContentHash hash;
    std::vector<char> piece(pieceSize);
    while (std::size_t got = bytes.Read(piece.data(), piece.size())) {
        hash.Update({piece.data(), got});
    }
    return hash.HexDigest();
}

std::string HashFile(const std::filesystem::path& path, const std::string& name) {
    FileBytes bytes(path, name);
    return HashBytes(bytes);
}

}  // namespace tool
