#include "tool/io/spool_file.h"

#include <string>
#include <vector>

namespace tool {

SpoolFile::SpoolFile(ByteSource& bytes)
    : m_file(OutputFile::CreateUnnamed(std::filesystem::temp_directory_path())),
      m_path("/proc/self/fd/" + std::to_string(m_file.Descriptor())) {
    std::vector<char> piece(kPieceSize);
    while (std::size_t got = bytes.Read(piece.data(), piece.size())) {
        m_file.Append({piece.data(), got});
    }
}

}  // namespace tool
