#include "tool/io/frame_spool.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace tool {

FrameSpool::FrameSpool()
    : m_file(OutputFile::CreateUnnamed(std::filesystem::temp_directory_path())) {}

void FrameSpool::Finish() {
    m_file.Append(m_buffer);
    m_buffer.clear();
}

bool FrameSpool::Reader::Next(std::string_view& bytes) {
    if (!Fill(sizeof(Length))) {
        return false;
    }
    Length length = 0;
    std::memcpy(&length, m_buffer.data() + m_at, sizeof length);
    m_at += sizeof length;
    Fill(length);
    bytes = std::string_view(m_buffer).substr(m_at, length);
    m_at += length;
    return true;
}

// Makes sure that `size` bytes stand in the buffer. False at the end of the file.
bool FrameSpool::Reader::Fill(std::size_t size) {
    if (m_buffer.size() - m_at >= size) {
        return true;
    }
    m_buffer.erase(0, m_at);
    m_at = 0;
    while (m_buffer.size() < size) {
        const std::size_t before = m_buffer.size();
        m_buffer.resize(std::max(size, kPieceSize));
        const ssize_t got = ::pread(m_spool.m_file.Descriptor(), m_buffer.data() + before,
                                    m_buffer.size() - before, static_cast<off_t>(m_offset));
        m_buffer.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(),
                                    "a temporary file cannot be read");
        }
        m_offset += static_cast<std::uint64_t>(std::max<ssize_t>(got, 0));
        if (got == 0) {
            if (before > 0) {
                throw std::system_error(EIO, std::generic_category(),
                                        "a temporary file is shorter than it was written");
            }
            return false;
        }
    }
    return true;
}

}  // namespace tool
