#include "tool/rejects/known_rejects.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "recorddb/sha256.h"
#include "tool/io/byte_source.h"
#include "tool/io/output_file.h"
#include "tool/io/text_hash.h"
#include "tool/packet/packet_head.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// In bytes, of the beginning of a line, where the place of a record stands: enough for the name of
// any source.
constexpr std::size_t kLongestPlace = std::size_t{8} * 1024;

[[noreturn]] void CannotRead(const fs::path& path) {
    const int error = errno;
    throw std::system_error(error, std::generic_category(),
                            path.string() + ": what was rejected earlier cannot be read");
}

// A file that is read; it counts as not there when it is no regular file.
class InputFile {
  public:
    explicit InputFile(fs::path path)
        : m_path(std::move(path)),
          // Does not follow a link, and does not wait for the writer of a pipe.
          m_descriptor(::open(m_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
        if (m_descriptor < 0 && errno != ENOENT && errno != ELOOP && errno != ENXIO) {
            CannotRead(m_path);
        }
        struct stat status = {};
        m_regular =
            m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

    bool IsRegular() const { return m_regular; }

    // Whether somebody is writing the file.
    bool IsBeingWritten() const {
        return ::flock(m_descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    }

    // Reads up to `size` bytes at `offset`; fewer only at the end.
    std::string Read(std::uint64_t offset, std::size_t size) const {
        std::string bytes(size, '\0');
        std::size_t have = 0;
        while (have < size) {
            const ssize_t got = ::pread(m_descriptor, bytes.data() + have, size - have,
                                        static_cast<off_t>(offset + have));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                CannotRead(m_path);
            }
            if (got == 0) {
                break;
            }
            have += static_cast<std::size_t>(got);
        }
        bytes.resize(have);
        return bytes;
    }

    void Sync() const {
        if (::fsync(m_descriptor) != 0) {
            CannotRead(m_path);
        }
    }

  private:
    fs::path m_path;
    int m_descriptor;
    bool m_regular;
};

// Hands over the beginning of each line, as far as it may matter, and the offset of the next line.
template <typename TakeLine>
void ReadLines(const InputFile& file, TakeLine takeLine) {
    std::uint64_t offset = 0;
    std::string line;
    while (true) {
        const std::string piece = file.Read(offset, kPieceSize);
        if (piece.empty()) {
            return;
        }
        std::size_t begin = 0;
        for (std::size_t end = piece.find('\n'); end != std::string::npos;
             begin = end + 1, end = piece.find('\n', begin)) {
            line.append(piece, begin, std::min(end - begin, kLongestPlace - line.size()));
            takeLine(line, offset + end + 1);
            line.clear();
        }
        line.append(piece, begin, kLongestPlace - line.size());
        offset += piece.size();
    }
}

// Skips `mark` and the digits after it at `at`; nothing when they do not stand there.
std::optional<std::size_t> SkipNumber(std::string_view line, std::size_t at,
                                      std::string_view mark) {
    if (line.substr(at, mark.size()) != mark) {
        return std::nullopt;
    }
    const std::size_t digits = at + mark.size();
    const std::size_t end = std::min(line.find_first_not_of("0123456789", digits), line.size());
    return end > digits ? std::optional(end) : std::nullopt;
}

// What a record may have been made of (SourceRecord::unit), as it stands before its number.
constexpr std::array<std::string_view, 3> kUnits = {", record ", ", row ", ", element "};

// The part of a line that an entry begins with, "<!-- SOURCE, record 7, line 12:"; empty for any
// other line.
std::string_view PlaceIn(std::string_view line) {
    if (!line.starts_with("<!-- ")) {
        return {};
    }
    for (std::size_t at = line.find(", "); at != std::string_view::npos;
         at = line.find(", ", at + 1)) {
        for (const std::string_view unit : kUnits) {
            const auto numberEnd = SkipNumber(line, at, unit);
            const auto lineEnd = numberEnd ? SkipNumber(line, *numberEnd, ", line ") : std::nullopt;
            if (lineEnd && line.substr(*lineEnd, 1) == ":") {
                return line.substr(0, *lineEnd + 1);
            }
        }
    }
    return {};
}

std::string HashOf(const InputFile& file) {
    recorddb::Sha256 hash;
    if (file.IsRegular()) {
        std::uint64_t offset = 0;
        for (std::string piece = file.Read(0, kPieceSize); !piece.empty();
             piece = file.Read(offset, kPieceSize)) {
            hash.Update(piece);
            offset += piece.size();
        }
    }
    return hash.HexDigest();
}

}  // namespace

std::string RejectFileName(int number, std::string_view kind) {
    return fmt::format("{:04}-{}.xml", number, kind);
}

int RejectFileNumber(const fs::path& file) {
    const std::string name = file.filename().string();
    int number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const std::string_view rest(end, static_cast<std::size_t>(name.data() + name.size() - end));
    const bool ours =
        error == std::errc() && (rest == fmt::format("-{}.xml", kRejectConfigurationKind) ||
                                 rest == fmt::format("-{}.xml", kRejectRecordsKind));
    return ours ? number : 0;
}

KnownRejects::KnownRejects(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const int number = RejectFileNumber(entry.path());
        if (number > 0 && entry.path().filename() == RejectFileName(number, kRejectRecordsKind)) {
            ReadPair(folder, number);
        }
    }
    std::sort(m_places.begin(), m_places.end(),
              [](const Place& a, const Place& b) { return a.key < b.key; });
}

void KnownRejects::ReadPair(const fs::path& folder, int number) {
    const fs::path path = folder / RejectFileName(number, kRejectRecordsKind);
    const InputFile file(path);
    if (!file.IsRegular() || file.IsBeingWritten()) {
        return;
    }
    const std::string configuration =
        HashOf(InputFile(folder / RejectFileName(number, kRejectConfigurationKind)));
    const auto index = static_cast<std::uint32_t>(m_files.size());
    m_files.push_back({path});
    // Further on it would be a part of a rejected record.
    const bool guarded = HasGuardedInstruction(file.Read(0, kPieceSize));
    ReadLines(file, [&](std::string_view line, std::uint64_t next) {
        const std::string_view place = PlaceIn(line);
        if (!place.empty()) {
            m_places.push_back({KeyOf(configuration, guarded, place), index, next});
        }
    });
}

bool KnownRejects::Contain(std::string_view configuration, bool guarded, std::string_view entry) {
    if (m_places.empty()) {
        return false;
    }
    const std::string_view comment = entry.substr(0, entry.find('\n'));
    const Key key =
        KeyOf(HashText(configuration), guarded, PlaceIn(comment.substr(0, kLongestPlace)));
    std::string_view text = entry.substr(std::min(comment.size() + 1, entry.size()));
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    const auto [first, last] =
        std::equal_range(m_places.begin(), m_places.end(), Place{key, 0, 0},
                         [](const Place& a, const Place& b) { return a.key < b.key; });
    return std::any_of(first, last, [&](const Place& place) { return Holds(place, text); });
}

// A person may have changed the file since it was read, or removed it.
bool KnownRejects::Holds(const Place& place, std::string_view text) {
    File& known = m_files[place.file];
    const InputFile file(known.path);
    if (!file.IsRegular() || file.Read(place.offset, text.size()) != text) {
        return false;
    }
    // The load that wrote it may have been killed before it synced the file.
    if (!known.synced) {
        file.Sync();
        SyncFolder(known.path.parent_path());
        known.synced = true;
    }
    return true;
}

KnownRejects::Key KnownRejects::KeyOf(std::string_view configurationHash, bool guarded,
                                      std::string_view place) {
    const std::string hex =
        HashText(fmt::format("{}{}{}", configurationHash, guarded ? "guarded" : "", place));
    Key key{};
    std::copy_n(hex.begin(), key.size(), key.begin());
    return key;
}

}  // namespace tool
