#ifndef TOOL_IO_BYTE_SOURCE_H
#define TOOL_IO_BYTE_SOURCE_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace tool {

// The bytes that are copied or searched at a time.
inline constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

// Where bytes come from, front to back.
class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Puts up to `size` bytes at `buffer` and returns how many; 0 only at the end. Fewer than
    // `size` does not mean the end. Throws SourceError when reading fails.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;

    // The name that errors give the source.
    virtual const std::string& Name() const = 0;
};

// Opens the file at `path` for reading, with `flags` of open(2) besides, and returns the
// descriptor, which is the caller's. Throws SourceError that calls it `name`.
int OpenForReading(const std::filesystem::path& path, const std::string& name, int flags = 0);

// Throws the SourceError for a source, called `name`, whose reading failed with the errno `error`.
[[noreturn]] void ThrowNotReadable(const std::string& name, int error);

// The bytes of a file, pipe or device. Owns its descriptor.
class FileBytes : public ByteSource {
  public:
    // Opens `path` and calls it `name` in errors. Throws SourceError.
    FileBytes(const std::filesystem::path& path, std::string name);
    // Reads an open `descriptor`, which stays the caller's.
    FileBytes(int descriptor, std::string name);
    ~FileBytes() override;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    std::size_t Read(char* buffer, std::size_t size) override;
    const std::string& Name() const override { return m_name; }

  private:
    std::string m_name;
    int m_descriptor = -1;
    bool m_owned = false;
};

// The bytes of a text that the caller keeps alive.
class TextBytes : public ByteSource {
  public:
    explicit TextBytes(std::string_view text, std::string name = "text")
        : m_rest(text), m_name(std::move(name)) {}

    std::size_t Read(char* buffer, std::size_t size) override;
    const std::string& Name() const override { return m_name; }

  private:
    std::string_view m_rest;
    std::string m_name;
};

}  // namespace tool

#endif
