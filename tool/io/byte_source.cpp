#include "tool/io/byte_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "tool/io/source_error.h"
#include "tool/process/wait_to_read.h"

namespace tool {

namespace {

std::string Reason(int error) {
    return std::generic_category().message(error);
}

}  // namespace

int OpenForReading(const std::filesystem::path& path, const std::string& name, int flags) {
    // A pipe would make the opening wait for somebody who writes to it, whatever the signals.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags);
    if (descriptor >= 0) {
        if ((static_cast<unsigned>(flags) & static_cast<unsigned>(O_NONBLOCK)) == 0) {
            ::fcntl(descriptor, F_SETFL, O_RDONLY);
        }
        return descriptor;
    }
    int error = errno;
    if (error == ENOENT || error == ENOTDIR) {
        throw SourceError(
            fmt::format("{}: there is no such file; check the path and its spelling", name));
    }
    throw SourceError(
        fmt::format("{}: cannot be opened: {}; make it readable for this user and run again", name,
                    Reason(error)));
}

void ThrowNotReadable(const std::string& name, int error) {
    throw SourceError(fmt::format(
        "{}: cannot be read: {}; see that the file and its disk are sound and run again", name,
        Reason(error)));
}

FileBytes::FileBytes(const std::filesystem::path& path, std::string name)
    : m_name(std::move(name)), m_descriptor(OpenForReading(path, m_name)), m_owned(true) {}

FileBytes::FileBytes(int descriptor, std::string name)
    : m_name(std::move(name)), m_descriptor(descriptor) {}

FileBytes::~FileBytes() {
    if (m_owned) {
        ::close(m_descriptor);
    }
}

std::size_t FileBytes::Read(char* buffer, std::size_t size) {
    WaitToRead(m_descriptor, m_name);
    while (true) {
        ssize_t got = ::read(m_descriptor, buffer, size);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            ThrowNotReadable(m_name, errno);
        }
    }
}

std::size_t TextBytes::Read(char* buffer, std::size_t size) {
    std::size_t count = std::min(size, m_rest.size());
    std::memcpy(buffer, m_rest.data(), count);
    m_rest.remove_prefix(count);
    return count;
}

}  // namespace tool
