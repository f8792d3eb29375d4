#include "tool/verify/comparison/attachment_files.h"

#include "recorddb/sha256.h"

namespace tool {

FileContent AttachmentFiles::Read(const std::string& name, std::string_view field) const {
    recorddb::AttachmentFile file;
    recorddb::Sha256 hash;
    PaMessage problem = m_folder.Open(name, field, file);
    if (problem.ID() == 0) {
        problem = file.Read([&hash](std::span<const std::byte> piece) { hash.Update(piece); });
    }
    if (problem.ID() != 0) {
        return {.size = 0, .sha256 = {}, .problem = problem.FullMsg().ToUtf8()};
    }
    return {.size = file.Size(), .sha256 = hash.HexDigest(), .problem = {}};
}

}  // namespace tool
