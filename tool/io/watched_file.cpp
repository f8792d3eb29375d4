#include "tool/io/watched_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "tool/io/source_error.h"

namespace tool {

namespace {

bool IsSameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

[[noreturn]] void ThrowWatchedChanged(const std::string& name, std::string_view what) {
    throw SourceChanged(
        fmt::format("{}: {} while it was read; let what writes it come to its end, then run again",
                    name, what));
}

}  // namespace

WatchedFile::WatchedFile(const std::filesystem::path& path, std::string name)
    : m_path(path), m_name(std::move(name)), m_descriptor(OpenForReading(m_path, m_name)) {
    if (::fstat(m_descriptor, &m_opened) != 0) {
        const int error = errno;
        ::close(m_descriptor);
        ThrowNotReadable(m_name, error);
    }
}

WatchedFile::~WatchedFile() {
    ::close(m_descriptor);
}

std::size_t WatchedFile::Read(char* buffer, std::size_t size) {
    const std::size_t got = FileBytes(m_descriptor, m_name).Read(buffer, size);
    if (got == 0 && S_ISREG(m_opened.st_mode)) {
        RequireUnchanged();
    }
    return got;
}

void WatchedFile::RequireUnchanged() const {
    struct stat now {};
    if (::fstat(m_descriptor, &now) != 0) {
        ThrowNotReadable(m_name, errno);
    }
    if (now.st_size != m_opened.st_size || !IsSameTime(now.st_mtim, m_opened.st_mtim)) {
        ThrowWatchedChanged(m_name, "the file was written to");
    }
    struct stat named {};
    if (::stat(m_path.c_str(), &named) == 0 &&
        (named.st_dev != now.st_dev || named.st_ino != now.st_ino)) {
        ThrowWatchedChanged(m_name, "another file took its name");
    }
}

}  // namespace tool
