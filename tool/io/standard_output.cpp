#include "tool/io/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "tool/io/write_error.h"

namespace tool {

StandardOutput::StandardOutput() : std::ostream(static_cast<std::streambuf*>(this)) {
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    // Without this a stream swallows what its buffer throws.
    std::ostream::exceptions(std::ios::badbit);
}

int StandardOutput::overflow(int character) {
    using Traits = std::char_traits<char>;
    sync();
    if (!Traits::eq_int_type(character, Traits::eof())) {
        *pptr() = Traits::to_char_type(character);
        pbump(1);
    }
    return Traits::not_eof(character);
}

int StandardOutput::sync() {
    const char* at = pbase();
    const char* const end = pptr();
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    while (at != end && !m_failed) {
        const ssize_t written = ::write(STDOUT_FILENO, at, static_cast<std::size_t>(end - at));
        if (written >= 0) {
            at += written;
        } else if (errno != EINTR) {
            m_failed = true;
            throw WriteError(errno, std::generic_category(), "standard output: cannot be written");
        }
    }
    return 0;
}

void OccupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // The system gives out the lowest free number, which is this one.
            [[maybe_unused]] const int taken =
                ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace tool
