#ifndef TOOL_IO_SOURCE_FILE_H
#define TOOL_IO_SOURCE_FILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tool/io/byte_source.h"

namespace tool {

// An open source, known by the hash of its content. Whatever happens to the file meanwhile, what is
// read from it are the bytes that were hashed.
//
// The whole file is hashed first, since a load must know what it reads before the first record.
// While it is read afterwards, each block is compared with what it was, by a code of it, before any
// byte of it is handed out. That takes 16 bytes of memory for each mebibyte of the source.
class SourceFile {
  public:
    // Opens and hashes the file at `path`, called `name` in errors. Throws SourceError.
    SourceFile(const std::filesystem::path& path, std::string name);
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    const std::string& Name() const;

    // The SHA-256 of the content as 64 lower-case hexadecimal digits.
    const std::string& Sha256() const { return m_sha256; }

    // The content from its front on; several may be read side by side, each lasts without this
    // object. Their Read throws SourceChanged instead of handing out bytes that differ from those
    // that were hashed, and throws what RequireUnchanged does.
    std::unique_ptr<ByteSource> Read() const;

    // Throws SourceChanged when the file has been written to since it was hashed, or another file
    // has taken its name. A file that was removed is read to its end.
    void RequireUnchanged() const;

  private:
    struct File;
    class Reader;

    void Hash();

    std::shared_ptr<File> m_file;
    std::string m_sha256;
};

}  // namespace tool

#endif
