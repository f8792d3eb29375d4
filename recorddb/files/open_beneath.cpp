#include "recorddb/files/open_beneath.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace recorddb {

namespace {

namespace fs = std::filesystem;

constexpr int kReadingFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

// How often the kernel is asked again when a folder was renamed while it looked.
constexpr int kMostAttempts = 16;

// The kernel itself makes sure that the file is beneath the folder, but it also refuses links that
// begin at the root, or leave the folder and come back.
FileDescriptor OpenByKernel(int folder, const std::string& name) {
    open_how how{};
    how.flags = kReadingFlags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    long number = -1;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        number = syscall(SYS_openat2, folder, name.c_str(), &how, sizeof how);
        if (number >= 0 || (errno != EAGAIN && errno != EINTR)) {
            break;
        }
    }
    return FileDescriptor(static_cast<int>(number));
}

// The way from a folder to what the name leads to, all links resolved. Empty when there is no such
// way, with the reason in errno.
fs::path WayWithoutLinks(const fs::path& folder, const std::string& name) {
    std::error_code error;
    const fs::path base = fs::canonical(folder, error);
    const fs::path target = error ? fs::path() : fs::canonical(folder / name, error);
    if (error) {
        errno = error.value();
        return {};
    }
    const auto [end, rest] = std::mismatch(base.begin(), base.end(), target.begin(), target.end());
    fs::path way;
    if (end == base.end()) {
        std::for_each(rest, target.end(), [&way](const fs::path& part) { way /= part; });
    }
    errno = EXDEV;
    return way;
}

// Opens folder by folder and follows no link: one that was put into the way since it was resolved
// makes it fail.
FileDescriptor OpenByWalking(int folder, const fs::path& way) {
    FileDescriptor step;
    int at = folder;
    const fs::path last = std::prev(way.end())->string();
    for (auto part = way.begin(); std::next(part) != way.end(); ++part) {
        step = FileDescriptor(openat(at, part->c_str(), kFolderFlags | O_NOFOLLOW));
        if (!step.IsOpen()) {
            return {};
        }
        at = step.Number();
    }
    return FileDescriptor(openat(at, last.c_str(), kReadingFlags | O_NOFOLLOW));
}

// True for the answers of a kernel that does not know the call, and of a sandbox that does not let
// it through.
bool IsUnavailable(int error) {
    return error == ENOSYS || error == EPERM;
}

}  // namespace

FileDescriptor OpenBeneath(const fs::path& folder, const std::string& name) {
    const FileDescriptor base(open(folder.c_str(), kFolderFlags));
    if (!base.IsOpen()) {
        return {};
    }
    FileDescriptor file = OpenByKernel(base.Number(), name);
    if (file.IsOpen() || (errno != EXDEV && !IsUnavailable(errno))) {
        return file;
    }
    const fs::path way = WayWithoutLinks(folder, name);
    return way.empty() ? FileDescriptor() : OpenByWalking(base.Number(), way);
}

}  // namespace recorddb
