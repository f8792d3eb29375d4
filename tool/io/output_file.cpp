#include "tool/io/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include "tool/io/write_error.h"

namespace tool {

namespace {

[[noreturn]] void Fail(const std::filesystem::path& path, const char* what) {
    const int error = errno;
    throw std::system_error(error, std::generic_category(), path.string() + ": cannot be " + what);
}

int Open(const std::filesystem::path& path, int flags, mode_t permissions, const char* what) {
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC, permissions);
    if (descriptor < 0) {
        Fail(path, what);
    }
    return descriptor;
}

[[noreturn]] void CannotWrite(const std::filesystem::path& path) {
    const int error = errno;
    throw WriteError(error, std::generic_category(), path.string() + ": cannot be written");
}

}  // namespace

OutputFile OutputFile::CreateNew(const std::filesystem::path& path, mode_t permissions) {
    return {Open(path, O_WRONLY | O_CREAT | O_EXCL, permissions, "created"), path};
}

OutputFile OutputFile::CreateUnnamed(const std::filesystem::path& folder) {
    constexpr mode_t ownerOnly = 0600;
    int descriptor = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, ownerOnly);
    if (descriptor >= 0) {
        return {descriptor, folder};
    }
    // Not every file system knows files without a name.
    std::string name = (folder / ".ztimport-XXXXXX").string();
    descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) {
        Fail(folder, "written");
    }
    ::unlink(name.c_str());
    return {descriptor, folder};
}

OutputFile OutputFile::OpenStream(const std::filesystem::path& path) {
    OutputFile file(Open(path, O_WRONLY | O_NOCTTY, 0, "opened"), path, true);
    // What stood there a moment ago may have been replaced.
    struct stat status = {};
    if (::fstat(file.m_descriptor, &status) != 0 || S_ISREG(status.st_mode) ||
        S_ISBLK(status.st_mode)) {
        errno = EEXIST;
        Fail(path, "opened");
    }
    return file;
}

OutputFile::OutputFile(int descriptor, std::filesystem::path path, bool stream)
    : m_descriptor(descriptor), m_path(std::move(path)), m_stream(stream) {}

OutputFile::~OutputFile() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_path(std::move(other.m_path)),
      m_stream(other.m_stream),
      m_size(other.m_size) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_path, other.m_path);
    std::swap(m_stream, other.m_stream);
    std::swap(m_size, other.m_size);
    return *this;
}

void OutputFile::Append(std::string_view bytes) {
    WriteAt(m_size, bytes);
}

void OutputFile::WriteAt(std::uint64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = m_stream ? ::write(m_descriptor, bytes.data(), bytes.size())
                                         : ::pwrite(m_descriptor, bytes.data(), bytes.size(),
                                                    static_cast<off_t>(offset));
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            CannotWrite(m_path);
        }
        offset += static_cast<std::uint64_t>(written);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    m_size = std::max(m_size, offset);
}

void OutputFile::Truncate(std::uint64_t size) {
    if (::ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
        CannotWrite(m_path);
    }
    m_size = size;
}

void OutputFile::Sync() {
    if (!m_stream && ::fsync(m_descriptor) != 0) {
        CannotWrite(m_path);
    }
}

void OutputFile::Close() {
    if (m_descriptor >= 0 && ::close(std::exchange(m_descriptor, -1)) != 0) {
        CannotWrite(m_path);
    }
}

void SyncFolder(const std::filesystem::path& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        // Who may write to a folder, but not read it, cannot sync it.
        if (errno == EACCES) {
            return;
        }
        CannotWrite(folder);
    }
    const int result = ::fsync(descriptor);
    const int error = errno;
    ::close(descriptor);
    // Some file systems have nothing to sync in a folder and say so in this way.
    if (result != 0 && error != EINVAL) {
        errno = error;
        CannotWrite(folder);
    }
}

}  // namespace tool
