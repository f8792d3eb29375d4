#include "tool/spool_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

#include "tool/output_file.h"

namespace tool {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

OutputFile CreateTemporary() {
    std::string path = (std::filesystem::temp_directory_path() / "ztimport-XXXXXX").string();
    int descriptor = ::mkstemp(path.data());
    if (descriptor < 0) {
        int error = errno;
        throw std::system_error(error, std::generic_category(), path + ": cannot be created");
    }
    return {descriptor, path};
}

void Remove(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

}  // namespace

SpoolFile::SpoolFile(ByteSource& bytes) {
    OutputFile file = CreateTemporary();
    m_path = file.Path();
    try {
        std::vector<char> piece(pieceSize);
        while (std::size_t got = bytes.Read(piece.data(), piece.size())) {
            file.Append({piece.data(), got});
        }
        m_size = file.Size();
        file.Close();
    } catch (...) {
        Remove(m_path);
        throw;
    }
}

SpoolFile::~SpoolFile() {
    Remove(m_path);
}

}  // namespace tool
