#include "tool/io/content_hash.h"

#include "recorddb/files/content_hash.h"

namespace tool {

std::string HashText(std::string_view text) {
    recorddb::ContentHash hash;
    hash.Update(text);
    return hash.HexDigest();
}

}  // namespace tool
