#ifndef TOOL_IO_FILE_IDENTITY_H
#define TOOL_IO_FILE_IDENTITY_H

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <tuple>

namespace tool {

// What tells one file from another, whatever names and links lead to it. A file that does not exist
// yet is known by its folder and its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;   // of the file; of its folder when it does not exist yet
    std::string name;  // only of a file that does not exist yet

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    friend bool operator<(const FileIdentity& left, const FileIdentity& right) {
        return std::tie(left.device, left.inode, left.name) <
               std::tie(right.device, right.inode, right.name);
    }
};

// The identity of the file that `path` leads to, or that writing to `path` would make. Nothing when
// the folder does not exist, and for character devices: a terminal or /dev/null may serve several
// purposes at once.
std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path);

// The same for the file that is open as `descriptor`. Nothing when that is no regular file.
std::optional<FileIdentity> IdentityOf(int descriptor);

// `path` with the symbolic link that its last part may be resolved, and any further links that this
// leads to: the name of the file itself, which may not exist yet. Throws std::system_error when the
// links lead in a circle.
std::filesystem::path WithoutLinks(const std::filesystem::path& path);

}  // namespace tool

#endif
