#include "tool/io/folder_files.h"

#include <fmt/format.h>

#include <system_error>

#include "tool/io/source_error.h"

namespace tool {

namespace fs = std::filesystem;

FolderFiles FilesOfFolder(const std::string& folder) {
    FolderFiles found;
    try {
        for (fs::recursive_directory_iterator at(folder), end; at != end; ++at) {
            std::error_code ignored;
            if (at->path().filename().string().starts_with('.')) {
                at.disable_recursion_pending();
            } else if (at->is_regular_file(ignored)) {
                found.files.push_back(at->path());
            } else if (at->is_symlink(ignored) || !at->is_directory(ignored)) {
                found.others.push_back(at->path());
            }
        }
    } catch (const fs::filesystem_error& error) {
        throw SourceError(
            fmt::format("{}: the directory cannot be read: {}; make it readable for this user and "
                        "run again",
                        folder, error.code().message()));
    }
    return found;
}

}  // namespace tool
