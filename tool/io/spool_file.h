#ifndef TOOL_IO_SPOOL_FILE_H
#define TOOL_IO_SPOOL_FILE_H

#include <cstdint>
#include <filesystem>

#include "tool/io/byte_source.h"
#include "tool/io/output_file.h"

namespace tool {

// A temporary file that holds a copy of a source which can be read once only, such as a pipe.
// No folder shows it, so it is gone with the object, or with the process, however that ends.
class SpoolFile {
  public:
    // Copies all of `bytes` into a file of the system's temporary directory. Throws SourceError
    // when `bytes` cannot be read, std::system_error when the file cannot be written.
    explicit SpoolFile(ByteSource& bytes);
    SpoolFile(const SpoolFile&) = delete;
    SpoolFile& operator=(const SpoolFile&) = delete;

    // A path by which this process can open the file, as long as the object lives.
    const std::filesystem::path& Path() const { return m_path; }
    std::uint64_t Size() const { return m_file.Size(); }

  private:
    OutputFile m_file;
    std::filesystem::path m_path;
};

}  // namespace tool

#endif
