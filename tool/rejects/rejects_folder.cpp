#include "tool/rejects/rejects_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "tool/rejects/known_rejects.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// With more digits the order of the names would not be the order of the numbers.
constexpr int kHighestNumber = 9999;

[[noreturn]] void Refuse(const fs::path& path, int error, std::string_view what) {
    throw std::system_error(error, std::generic_category(),
                            fmt::format("{}: {}", path.string(), what));
}

// One load at a time chooses a number and makes the files of it. Where the file system knows no
// locks, files still do not take each other's names.
class FolderLock {
  public:
    explicit FolderLock(const fs::path& folder)
        : m_descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        while (::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

  private:
    int m_descriptor;
};

// Gives `file` its name at `path` unless something stands there; true when it has it.
bool MoveToNew(const fs::path& file, const fs::path& path) {
    if (::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    // Network file systems know no such rename; a link does not replace anything either.
    if (errno == EINVAL && ::link(file.c_str(), path.c_str()) == 0) {
        ::unlink(file.c_str());
        return true;
    }
    if (errno != EEXIST) {
        Refuse(path, errno, "cannot be written");
    }
    return false;
}

// Makes a file that appears complete: one that a process has left empty would keep the folder from
// being loaded. Nothing when something of its name stands there already.
std::optional<OutputFile> Create(const fs::path& path, std::string_view content) {
    std::random_device random;
    const std::string name = fmt::format(".{}.{:08x}.new", path.filename().string(), random());
    OutputFile file = OutputFile::CreateNew(path.parent_path() / name);
    try {
        // Nobody else knows the file yet, so there is nothing to wait for.
        ::flock(file.Descriptor(), LOCK_EX | LOCK_NB);
        file.Append(content);
        file.Sync();
        if (MoveToNew(file.Path(), path)) {
            file.SetPath(path);
            return file;
        }
        ::unlink(file.Path().c_str());
    } catch (const std::system_error&) {
        ::unlink(file.Path().c_str());
        throw;
    }
    return std::nullopt;
}

// Finds out before hours of loading, not after, that rejects cannot be written to the place.
void CheckWritable(const fs::path& folder) {
    fs::path place = fs::absolute(folder);
    while (!fs::exists(place) && place.has_relative_path()) {
        place = place.parent_path();
    }
    if (!fs::is_directory(place)) {
        Refuse(place, ENOTDIR, "rejected records need a directory");
    }
    if (::access(place.c_str(), W_OK | X_OK) != 0) {
        Refuse(place, errno, "rejected records cannot be written here");
    }
}

}  // namespace

RejectsFolder::RejectsFolder(fs::path path) : m_path(std::move(path)) {
    CheckWritable(m_path);
}

void RejectsFolder::Make() const {
    std::vector<fs::path> missing;
    for (fs::path place = fs::absolute(m_path); !fs::exists(place); place = place.parent_path()) {
        missing.push_back(place);
    }
    fs::create_directories(m_path);
    for (const fs::path& place : missing) {
        SyncFolder(place.parent_path());
    }
}

int RejectsFolder::NextNumber() const {
    int highest = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_path)) {
        highest = std::max(highest, RejectFileNumber(entry.path()));
    }
    return highest + 1;
}

RejectsFolder::Pair RejectsFolder::Add(std::string_view configuration,
                                       std::string_view records) const {
    Make();
    const FolderLock lock(m_path);
    for (int number = NextNumber(); number <= kHighestNumber; ++number) {
        fs::path beside;
        if (!configuration.empty()) {
            beside = m_path / RejectFileName(number, kRejectConfigurationKind);
            if (!Create(beside, configuration)) {
                continue;
            }
        }
        // The configuration goes first: records without theirs would be loaded under another one.
        if (auto file = Create(m_path / RejectFileName(number, kRejectRecordsKind), records)) {
            SyncFolder(m_path);
            return {beside, std::move(*file)};
        }
        // Nobody else uses a configuration file that has just been made.
        if (!beside.empty()) {
            ::unlink(beside.c_str());
        }
    }
    Refuse(m_path, EEXIST,
           "the numbers for files of rejected records are used up, use an empty directory");
}

}  // namespace tool
