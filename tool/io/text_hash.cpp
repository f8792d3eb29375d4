#include "tool/io/text_hash.h"

#include "recorddb/sha256.h"

namespace tool {

std::string HashText(std::string_view text) {
    recorddb::Sha256 hash;
    hash.Update(text);
    return hash.HexDigest();
}

}  // namespace tool
