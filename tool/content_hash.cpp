#include "tool/content_hash.h"

#include <vector>

#include "recorddb/attachments/content_hash.h"

namespace tool {

using recorddb::ContentHash;

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

}  // namespace

std::string HashText(std::string_view text) {
    ContentHash hash;
    hash.Update(text);
    return hash.HexDigest();
}

std::string HashBytes(ByteSource& bytes) {
    ContentHash hash;
    std::vector<char> piece(pieceSize);
    while (std::size_t got = bytes.Read(piece.data(), piece.size())) {
        hash.Update(std::string_view(piece.data(), got));
    }
    return hash.HexDigest();
}

std::string HashFile(const std::filesystem::path& path, const std::string& name) {
    FileBytes bytes(path, name);
    return HashBytes(bytes);
}

}  // namespace tool
