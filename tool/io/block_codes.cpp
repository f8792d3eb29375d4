#include "tool/io/block_codes.h"

#include <openssl/evp.h>
#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace tool {

namespace {

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kNonceSize = 12;

void RequireDone(int result) {
    if (result != 1) {
        throw std::runtime_error("GMAC is not available from the cryptographic library");
    }
}

}  // namespace

struct BlockCodes::Context {
    struct Free {
        void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
    };

    std::unique_ptr<EVP_CIPHER_CTX, Free> handle{EVP_CIPHER_CTX_new()};
};

BlockCodes::BlockCodes() : m_context(std::make_unique<Context>()) {
    std::array<unsigned char, kKeySize> key{};
    RequireDone(m_context->handle != nullptr ? 1 : 0);
    // The library's own generator takes milliseconds to begin.
    if (::getrandom(key.data(), key.size(), 0) != static_cast<ssize_t>(key.size())) {
        throw std::system_error(errno, std::generic_category(), "no random numbers to be had");
    }
    RequireDone(EVP_EncryptInit_ex(m_context->handle.get(), EVP_aes_128_gcm(), nullptr, key.data(),
                                   nullptr));
}

BlockCodes::~BlockCodes() = default;

BlockCodes::Code BlockCodes::Of(std::uint64_t number, std::span<const char> block) const {
    EVP_CIPHER_CTX* const context = m_context->handle.get();
    std::array<unsigned char, kNonceSize> nonce{};
    std::copy_n(reinterpret_cast<const unsigned char*>(&number), sizeof number, nonce.begin());
    RequireDone(EVP_EncryptInit_ex(context, nullptr, nullptr, nullptr, nonce.data()));
    int size = 0;
    // Data that is authenticated and not encrypted gives no output.
    RequireDone(EVP_EncryptUpdate(context, nullptr, &size,
                                  reinterpret_cast<const unsigned char*>(block.data()),
                                  static_cast<int>(block.size())));
    std::array<unsigned char, sizeof(Code)> rest{};
    RequireDone(EVP_EncryptFinal_ex(context, rest.data(), &size));
    Code code{};
    RequireDone(EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_GET_TAG, static_cast<int>(code.size()),
                                    code.data()));
    return code;
}

}  // namespace tool
