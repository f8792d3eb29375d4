#ifndef RECORDDB_FILES_OPEN_BENEATH_H
#define RECORDDB_FILES_OPEN_BENEATH_H

#include <filesystem>
#include <string>

#include "recorddb/files/file_descriptor.h"

namespace recorddb {

// Opens what a relative name leads to beneath a folder, for reading. Whatever happens to the folder
// meanwhile, nothing outside of it is opened: each step of the way is checked as it is taken, not a
// path beforehand. Symbolic links are followed as far as they end beneath the folder. Does not wait
// for anything, such as the other end of a pipe.
//
// Returns no descriptor on failure, and leaves the reason in errno: EXDEV when the name leads out
// of the folder.
FileDescriptor OpenBeneath(const std::filesystem::path& folder, const std::string& name);

}  // namespace recorddb

#endif
