#include "tool/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace tool {

namespace {

[[noreturn]] void Fail(const std::filesystem::path& path, const char* what) {
    int error = errno;
    throw std::system_error(error, std::generic_category(), path.string() + ": cannot be " + what);
}

}  // namespace

OutputFile OutputFile::CreateNew(const std::filesystem::path& path) {
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        Fail(path, "created");
    }
    return {descriptor, path};
}

OutputFile OutputFile::OpenExisting(const std::filesystem::path& path) {
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) {
        Fail(path, "opened");
    }
    OutputFile file(descriptor, path);
    file.m_size = std::filesystem::file_size(path);
    return file;
}

OutputFile::OutputFile(int descriptor, std::filesystem::path path)
    : m_descriptor(descriptor), m_path(std::move(path)) {}

OutputFile::~OutputFile() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_path(std::move(other.m_path)),
      m_size(other.m_size) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_path, other.m_path);
    std::swap(m_size, other.m_size);
    return *this;
}

void OutputFile::Append(std::string_view bytes) {
    WriteAt(m_size, bytes);
}

void OutputFile::WriteAt(std::uint64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t written =
            ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            Fail(m_path, "written");
        }
        offset += static_cast<std::uint64_t>(written);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    m_size = offset;
}

void OutputFile::Truncate(std::uint64_t size) {
    if (::ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
        Fail(m_path, "written");
    }
    m_size = size;
}

void OutputFile::Sync() {
    if (::fsync(m_descriptor) != 0) {
        Fail(m_path, "written");
    }
}

void OutputFile::Close() {
    if (m_descriptor >= 0 && ::close(std::exchange(m_descriptor, -1)) != 0) {
        Fail(m_path, "written");
    }
}

}  // namespace tool
