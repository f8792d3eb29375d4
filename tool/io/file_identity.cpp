#include "tool/io/file_identity.h"

#include <sys/stat.h>

#include <system_error>

namespace tool {

namespace fs = std::filesystem;

namespace {

std::optional<FileIdentity> IdentityOf(const struct stat& status) {
    if (S_ISCHR(status.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino, {}};
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const fs::path& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0) {
        return IdentityOf(status);
    }
    const fs::path file = WithoutLinks(path);
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (::stat(folder.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino, file.filename().string()};
}

std::optional<FileIdentity> IdentityOf(int descriptor) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return IdentityOf(status);
}

fs::path WithoutLinks(const fs::path& path) {
    // As many links as the system follows.
    constexpr int mostLinks = 40;
    fs::path file = path;
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(file, error)); ++links) {
        const fs::path target = fs::read_symlink(file, error);
        if (links == mostLinks || error) {
            throw std::system_error(std::make_error_code(std::errc::too_many_symbolic_link_levels),
                                    path.string() + ": this link leads nowhere");
        }
        file = target.is_absolute() ? target : file.parent_path() / target;
    }
    return file;
}

}  // namespace tool
