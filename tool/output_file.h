#ifndef TOOL_OUTPUT_FILE_H
#define TOOL_OUTPUT_FILE_H

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tool {

// A file that is being written. Owns its descriptor. All operations throw std::system_error that
// names the file.
class OutputFile {
  public:
    // Makes the file, which must not exist yet.
    static OutputFile CreateNew(const std::filesystem::path& path);
    // Opens a file that exists; what is in it stays.
    static OutputFile OpenExisting(const std::filesystem::path& path);
    // Takes over an open DESCRIPTOR of the file at PATH.
    OutputFile(int descriptor, std::filesystem::path path);
    ~OutputFile();
    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;

    // Writes BYTES behind what has been written.
    void Append(std::string_view bytes);
    // Writes BYTES at OFFSET, over what stands there; Append goes on behind them.
    void WriteAt(std::uint64_t offset, std::string_view bytes);
    // Cuts off what stands behind SIZE bytes.
    void Truncate(std::uint64_t size);
    // Sees the content to the disk.
    void Sync();
    // Closes the file, and reports what the system only now finds out.
    void Close();

    const std::filesystem::path& Path() const { return m_path; }
    std::uint64_t Size() const { return m_size; }

  private:
    int m_descriptor;
    std::filesystem::path m_path;
    std::uint64_t m_size = 0;
};

}  // namespace tool

#endif
