#include "tool/io/source_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>
#include <utility>

#include "recorddb/sha256.h"
#include "tool/io/block_codes.h"
#include "tool/io/source_error.h"

namespace tool {

namespace {

constexpr std::size_t kBlockSize = std::size_t{1024} * 1024;

[[noreturn]] void ThrowChanged(const std::string& name, std::string_view what) {
    throw SourceChanged(
        fmt::format("{}: {} while it was read; let what writes it come to its end, "
                    "then run again",
                    name, what));
}

}  // namespace

// What the readers share.
struct SourceFile::File {
    std::filesystem::path path;
    std::string name;
    int descriptor = -1;
    std::uint64_t size = 0;
    timespec changed{};
    BlockCodes blockCodes;
    std::vector<BlockCodes::Code> codes;  // of each block

    File(std::filesystem::path thePath, std::string theName);
    ~File() { ::close(descriptor); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::size_t ReadBlock(std::uint64_t offset, std::span<char> block) const;
    void RequireUnchanged() const;
};

SourceFile::File::File(std::filesystem::path thePath, std::string theName)
    : path(std::move(thePath)), name(std::move(theName)) {
    // A pipe that has taken the file's place must not make the program wait for a writer.
    descriptor = OpenForReading(path, name, O_NONBLOCK);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        ThrowChanged(name, "another file took its name");
    }
    size = static_cast<std::uint64_t>(status.st_size);
    changed = status.st_mtim;
}

// Fills `block` unless the file ends before; returns how many bytes were read.
std::size_t SourceFile::File::ReadBlock(std::uint64_t offset, std::span<char> block) const {
    std::size_t filled = 0;
    while (filled < block.size()) {
        const ssize_t got = ::pread(descriptor, block.data() + filled, block.size() - filled,
                                    static_cast<off_t>(offset + filled));
        if (got == 0) {
            break;
        }
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            ThrowNotReadable(name, errno);
        }
    }
    return filled;
}

void SourceFile::File::RequireUnchanged() const {
    struct stat open {};
    struct stat named {};
    if (::fstat(descriptor, &open) != 0) {
        ThrowNotReadable(name, errno);
    }
    if (static_cast<std::uint64_t>(open.st_size) != size || open.st_mtim.tv_sec != changed.tv_sec ||
        open.st_mtim.tv_nsec != changed.tv_nsec) {
        ThrowChanged(name, "the file was written to");
    }
    if (::stat(path.c_str(), &named) == 0 &&
        (named.st_dev != open.st_dev || named.st_ino != open.st_ino)) {
        ThrowChanged(name, "another file took its name");
    }
}

// Reads the content block by block, each compared with what it was.
class SourceFile::Reader : public ByteSource {
  public:
    explicit Reader(std::shared_ptr<const File> file) : m_file(std::move(file)) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        if (m_at == m_filled) {
            NextBlock();
        }
        const std::size_t count = std::min(size, m_filled - m_at);
        std::copy_n(m_block.begin() + static_cast<std::ptrdiff_t>(m_at), count, buffer);
        m_at += count;
        return count;
    }

    const std::string& Name() const override { return m_file->name; }

  private:
    void NextBlock() {
        m_at = 0;
        m_filled = 0;
        m_file->RequireUnchanged();
        if (m_next == m_file->codes.size()) {
            return;
        }
        const std::uint64_t offset = std::uint64_t{m_next} * kBlockSize;
        m_block.resize(std::min<std::uint64_t>(kBlockSize, m_file->size - offset));
        const std::size_t got = m_file->ReadBlock(offset, m_block);
        if (got < m_block.size() ||
            m_file->blockCodes.Of(m_next, m_block) != m_file->codes[m_next]) {
            ThrowChanged(m_file->name, "the file was written to");
        }
        m_filled = got;
        ++m_next;
    }

    std::shared_ptr<const File> m_file;
    std::vector<char> m_block;
    std::size_t m_at = 0;
    std::size_t m_filled = 0;
    std::size_t m_next = 0;
};

SourceFile::SourceFile(const std::filesystem::path& path, std::string name)
    : m_file(std::make_shared<File>(path, std::move(name))) {
    Hash();
}

SourceFile::~SourceFile() = default;

void SourceFile::Hash() {
    recorddb::Sha256 hash;
    std::vector<char> block(std::min<std::uint64_t>(kBlockSize, m_file->size));
    for (std::uint64_t offset = 0; offset < m_file->size; offset += block.size()) {
        block.resize(std::min<std::uint64_t>(kBlockSize, m_file->size - offset));
        if (m_file->ReadBlock(offset, block) < block.size()) {
            ThrowChanged(m_file->name, "the file was written to");
        }
        hash.Update(std::string_view(block.data(), block.size()));
        m_file->codes.push_back(m_file->blockCodes.Of(m_file->codes.size(), block));
    }
    m_file->RequireUnchanged();
    m_sha256 = hash.HexDigest();
}

const std::string& SourceFile::Name() const {
    return m_file->name;
}

std::unique_ptr<ByteSource> SourceFile::Read() const {
    return std::make_unique<Reader>(m_file);
}

void SourceFile::RequireUnchanged() const {
    m_file->RequireUnchanged();
}

}  // namespace tool
