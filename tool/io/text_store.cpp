#include "tool/io/text_store.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "tool/io/byte_source.h"

namespace tool {

TextStore::TextStore()
    : m_file(OutputFile::CreateUnnamed(std::filesystem::temp_directory_path())) {}

std::uint64_t TextStore::Add(std::string_view text) {
    const std::uint64_t begin = m_file.Size() + m_buffer.size();
    m_buffer += text;
    if (m_buffer.size() >= kPieceSize) {
        m_file.Append(m_buffer);
        m_buffer.clear();
    }
    return begin;
}

std::string TextStore::Read(std::uint64_t begin, std::uint64_t size) {
    m_file.Append(m_buffer);
    m_buffer.clear();
    std::string text(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t got = ::pread(m_file.Descriptor(), text.data() + filled, size - filled,
                                    static_cast<off_t>(begin + filled));
        if (got == 0 || (got < 0 && errno != EINTR)) {
            throw std::system_error(got == 0 ? EIO : errno, std::generic_category(),
                                    "a temporary file cannot be read");
        }
        filled += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    return text;
}

}  // namespace tool
