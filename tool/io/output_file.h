#ifndef TOOL_IO_OUTPUT_FILE_H
#define TOOL_IO_OUTPUT_FILE_H

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <utility>

namespace tool {

// A file that is being written. Owns its descriptor. All operations throw std::system_error that
// names the file; once the file is open, it is a WriteError.
class OutputFile {
  public:
    // Makes the file, which must not exist yet; a link counts as a file. `permissions` are narrowed
    // by the process's mask.
    static OutputFile CreateNew(const std::filesystem::path& path, mode_t permissions = 0666);
    // Makes a file in `folder` that no folder shows and that is gone when it is closed, however the
    // process ends. Where the system can do that only in two steps, a process that is killed in
    // between leaves an empty file.
    static OutputFile CreateUnnamed(const std::filesystem::path& folder);
    // Opens what is no regular file, a terminal or a pipe, to write to it as it is. A pipe is
    // waited for until somebody reads it.
    static OutputFile OpenStream(const std::filesystem::path& path);
    ~OutputFile();
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;

    // Writes `bytes` after all that has been written.
    void Append(std::string_view bytes);
    // Writes `bytes` at `offset`, over what stands there. Not for streams.
    void WriteAt(std::uint64_t offset, std::string_view bytes);
    // Cuts off what stands after `size` bytes.
    void Truncate(std::uint64_t size);
    // Syncs the content to the disk. Does nothing for a stream.
    void Sync();
    // Closes the file, and reports what the system only now finds out.
    void Close();

    const std::filesystem::path& Path() const { return m_path; }
    // Says which name the file has been given since it was made.
    void SetPath(std::filesystem::path path) { m_path = std::move(path); }
    std::uint64_t Size() const { return m_size; }
    // Stays the object's. An unnamed file can be read through it, from its front.
    int Descriptor() const { return m_descriptor; }

  private:
    OutputFile(int descriptor, std::filesystem::path path, bool stream = false);

    int m_descriptor = -1;
    std::filesystem::path m_path;
    bool m_stream = false;
    std::uint64_t m_size = 0;
};

// Syncs `folder` itself to the disk: which files it holds. Throws std::system_error.
void SyncFolder(const std::filesystem::path& folder);

}  // namespace tool

#endif
