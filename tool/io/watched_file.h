#ifndef TOOL_IO_WATCHED_FILE_H
#define TOOL_IO_WATCHED_FILE_H

#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include "tool/io/byte_source.h"

namespace tool {

// A file that is read once, front to back, and must not change meanwhile. A pipe or a device is
// read as it is.
class WatchedFile final : public ByteSource {
  public:
    // Opens the file at `path`, called `name` in errors. Throws SourceError.
    WatchedFile(const std::filesystem::path& path, std::string name);
    ~WatchedFile() override;
    WatchedFile(const WatchedFile&) = delete;
    WatchedFile& operator=(const WatchedFile&) = delete;

    // Throws SourceChanged at the end of a file that was written to, or whose name another file has
    // taken, since it was opened.
    std::size_t Read(char* buffer, std::size_t size) override;
    const std::string& Name() const override { return m_name; }

  private:
    void RequireUnchanged() const;

    std::filesystem::path m_path;
    std::string m_name;
    int m_descriptor;
    struct stat m_opened {};
};

}  // namespace tool

#endif
