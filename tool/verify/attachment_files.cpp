#include "tool/verify/attachment_files.h"

#include <vector>

#include "recorddb/attachments/content_hash.h"
#include "tool/byte_source.h"
#include "tool/source_error.h"

namespace tool {

namespace {

constexpr std::size_t kPiece = std::size_t{256} * 1024;

FileContent ReadFile(const std::filesystem::path& path, const std::string& name) {
    FileContent content;
    FileBytes bytes(path, name);
    recorddb::ContentHash hash;
    std::vector<char> piece(kPiece);
    while (const std::size_t got = bytes.Read(piece.data(), piece.size())) {
        hash.Update(std::string_view(piece.data(), got));
        content.size += static_cast<std::int64_t>(got);
    }
    content.sha256 = hash.HexDigest();
    return content;
}

}  // namespace

FileContent AttachmentFiles::Read(const std::string& name) const {
    std::filesystem::path path;
    const PaMessage refusal = m_folder.Find(name, path);
    if (refusal.ID() != 0) {
        return {.size = 0, .sha256 = {}, .problem = refusal.FullMsg().ToUtf8()};
    }
    try {
        return ReadFile(path, name);
    } catch (const SourceError& error) {
        return {.size = 0, .sha256 = {}, .problem = error.what()};
    }
}

}  // namespace tool
