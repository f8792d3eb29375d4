#ifndef TOOL_SPOOL_FILE_H
#define TOOL_SPOOL_FILE_H

#include <cstdint>
#include <filesystem>

#include "tool/byte_source.h"

namespace tool {

// A temporary file that holds a copy of a source which can be read once only, such as a pipe.
// Removed when the object goes.
class SpoolFile {
  public:
    // Copies all of BYTES into a file of the system's temporary directory. Throws SourceError when
    // BYTES cannot be read, std::system_error when the file cannot be written.
    explicit SpoolFile(ByteSource& bytes);
    ~SpoolFile();
    SpoolFile(const SpoolFile&) = delete;
    SpoolFile& operator=(const SpoolFile&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::uint64_t Size() const { return m_size; }

  private:
    std::filesystem::path m_path;
    std::uint64_t m_size = 0;
};

}  // namespace tool

#endif
