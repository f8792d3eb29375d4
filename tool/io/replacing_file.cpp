#include "tool/io/replacing_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <string>
#include <system_error>
#include <utility>

#include "tool/io/file_identity.h"
#include "tool/io/write_error.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kUsualPermissions = 0666;
constexpr mode_t kPermissionBits = 0777;

[[noreturn]] void CannotWrite(const fs::path& path, std::error_code error) {
    throw std::system_error(error, path.string() + ": the report cannot be written here");
}

[[noreturn]] void CannotWrite(const fs::path& path, int error) {
    CannotWrite(path, std::error_code(error, std::generic_category()));
}

bool IsStream(const fs::path& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 &&
           (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode));
}

// The file itself that is to be replaced, or made. What must not be replaced is refused: folders,
// disks, and files that their owner has closed to writing.
fs::path FileToReplace(const fs::path& path) {
    fs::path file = WithoutLinks(path);
    struct stat status = {};
    struct stat named = {};
    if (::stat(path.c_str(), &named) != 0) {
        return file;
    }
    // The system's links for open descriptors (/proc/self/fd) need not hold a path.
    const bool same = ::stat(file.c_str(), &status) == 0 && status.st_dev == named.st_dev &&
                      status.st_ino == named.st_ino;
    if (!same) {
        CannotWrite(path, ENOENT);
    }
    if (!S_ISREG(status.st_mode)) {
        CannotWrite(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    if (::access(file.c_str(), W_OK) != 0) {
        CannotWrite(path, errno);
    }
    return file;
}

fs::path FolderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

// A rename replaces a file in one step, but only within a file system, so the new file is made
// beside the old one.
OutputFile CreateBeside(const fs::path& named, const fs::path& file) {
    struct stat status = {};
    const bool exists = ::stat(file.c_str(), &status) == 0;
    const mode_t permissions = exists ? status.st_mode & kPermissionBits : kUsualPermissions;
    // The new name must not become too long.
    constexpr std::size_t longestPart = 100;
    const std::string part = file.filename().string().substr(0, longestPart);
    std::random_device random;
    while (true) {
        const std::string name = fmt::format(".{}.{:08x}.new", part, random());
        try {
            OutputFile created = OutputFile::CreateNew(FolderOf(file) / name, permissions);
            if (exists && ::fchmod(created.Descriptor(), permissions) != 0) {
                ::unlink(created.Path().c_str());
                CannotWrite(named, errno);
            }
            return created;
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::file_exists) {
                CannotWrite(named, error.code());
            }
        }
    }
}

OutputFile OpenOrCreate(const fs::path& named, const fs::path& file, bool replaces) {
    return replaces ? CreateBeside(named, file) : OutputFile::OpenStream(file);
}

}  // namespace

ReplacingFile::ReplacingFile(fs::path path)
    : m_path(IsStream(path) ? path : FileToReplace(path)),
      m_replaces(!IsStream(m_path)),
      m_file(OpenOrCreate(path, m_path, m_replaces)) {}

ReplacingFile::~ReplacingFile() {
    if (m_replaces && !m_placed) {
        std::error_code ignored;
        fs::remove(m_file.Path(), ignored);
    }
}

void ReplacingFile::Place() {
    m_file.Sync();
    if (m_replaces) {
        std::error_code error;
        fs::rename(m_file.Path(), m_path, error);
        if (error) {
            throw WriteError(error, m_path.string() + ": cannot be written");
        }
        m_placed = true;
        SyncFolder(FolderOf(m_path));
    }
    m_placed = true;
}

void ReplacingFile::Finish() {
    if (!m_placed) {
        Place();
    }
    m_file.Close();
}

fs::path ReplacingFile::WorkFolder() const {
    return m_replaces ? FolderOf(m_path) : fs::temp_directory_path();
}

}  // namespace tool
