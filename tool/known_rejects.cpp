#include "tool/known_rejects.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "recorddb/attachments/content_hash.h"
#include "tool/output_file.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view closingTag = "</records>";

// Skips MARK and the digits behind it at AT; nothing when they do not stand there.
std::optional<std::size_t> SkipNumber(std::string_view line, std::size_t at,
                                      std::string_view mark) {
    if (line.substr(at, mark.size()) != mark) {
        return std::nullopt;
    }
    const std::size_t digits = at + mark.size();
    const std::size_t end = std::min(line.find_first_not_of("0123456789", digits), line.size());
    return end > digits ? std::optional(end) : std::nullopt;
}

// The part of a line that an entry begins with, "<!-- SOURCE, record 7, line 12:"; empty for any
// other line.
std::string_view PlaceIn(std::string_view line) {
    constexpr std::string_view recordMark = ", record ";
    if (!line.starts_with("<!-- ")) {
        return {};
    }
    for (std::size_t at = line.find(recordMark); at != std::string_view::npos;
         at = line.find(recordMark, at + 1)) {
        const auto recordEnd = SkipNumber(line, at, recordMark);
        const auto lineEnd = recordEnd ? SkipNumber(line, *recordEnd, ", line ") : std::nullopt;
        if (lineEnd && line.substr(*lineEnd, 1) == ":") {
            return line.substr(0, *lineEnd + 1);
        }
    }
    return {};
}

// What an entry is compared by: its place, and its lines up to one that could begin another. That
// may be a line of the record itself, but the same record is cut in the same place each time.
class EntryPiece {
  public:
    // Takes the next line, without its end. False when the piece has ended before it.
    bool Add(std::string_view line) {
        const std::string_view place = PlaceIn(line);
        if (m_begun && (!place.empty() || line == closingTag)) {
            return false;
        }
        m_text += m_begun || place.empty() ? line : place;
        m_text += '\n';
        m_begun = true;
        return true;
    }

    const std::string& Text() const { return m_text; }

  private:
    std::string m_text;
    bool m_begun = false;
};

std::string FirstPiece(std::string_view entry) {
    EntryPiece piece;
    while (!entry.empty()) {
        const std::size_t end = std::min(entry.find('\n'), entry.size());
        if (!piece.Add(entry.substr(0, end))) {
            break;
        }
        entry.remove_prefix(std::min(end + 1, entry.size()));
    }
    return piece.Text();
}

[[noreturn]] void CannotRead(const fs::path& path) {
    throw std::system_error(errno, std::generic_category(),
                            path.string() + ": what was rejected earlier cannot be read");
}

std::string ReadConfigurationFile(const fs::path& path) {
    if (!fs::exists(path)) {
        return {};
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        CannotRead(path);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

bool EndsClosed(const fs::path& path) {
    constexpr std::streamoff tailSize = 64;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    file.seekg(std::max<std::streamoff>(file.tellg() - tailSize, 0));
    std::string tail{std::istreambuf_iterator<char>(file), {}};
    tail.erase(tail.find_last_not_of(" \t\r\n") + 1);
    return tail.ends_with(closingTag);
}

// How much of a records file is whole entries and the tag in front of them; 0 when that is not
// there.
std::uintmax_t SizeOfWholeEntries(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::uintmax_t size = 0;
    std::uintmax_t whole = 0;
    for (std::string line; std::getline(file, line) && !file.eof();) {
        size += line.size() + 1;
        if (line.ends_with("</record>") || line == "<records>") {
            whole = size;
        }
    }
    return whole;
}

// Closes a file behind its last whole entry if a process was stopped while it wrote.
void CloseIfLeftOff(const fs::path& path) {
    const std::uintmax_t whole = EndsClosed(path) ? 0 : SizeOfWholeEntries(path);
    if (whole == 0) {
        return;
    }
    fs::resize_file(path, whole);
    OutputFile file = OutputFile::OpenExisting(path);
    file.Append(std::string(closingTag) + '\n');
    file.Close();
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
        error == std::errc() && (rest == fmt::format("-{}.xml", rejectConfigurationKind) ||
                                 rest == fmt::format("-{}.xml", rejectRecordsKind));
    return ours ? number : 0;
}

KnownRejects::KnownRejects(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const int number = RejectFileNumber(entry.path());
        if (number > 0 && entry.path().filename() == RejectFileName(number, rejectRecordsKind)) {
            ReadPair(folder, number);
        }
    }
    std::sort(m_known.begin(), m_known.end());
}

void KnownRejects::ReadPair(const fs::path& folder, int number) {
    const std::string configuration =
        ReadConfigurationFile(folder / RejectFileName(number, rejectConfigurationKind));
    const fs::path path = folder / RejectFileName(number, rejectRecordsKind);
    CloseIfLeftOff(path);
    std::ifstream file(path, std::ios::binary);
    EntryPiece piece;
    for (std::string line; std::getline(file, line);) {
        if (!piece.Add(line)) {
            m_known.push_back(DigestOf(configuration, piece.Text()));
            piece = EntryPiece();
            piece.Add(line);
        }
    }
    m_known.push_back(DigestOf(configuration, piece.Text()));
    if (!file.is_open() || file.bad()) {
        CannotRead(path);
    }
}

bool KnownRejects::Contain(std::string_view configuration, std::string_view entry) const {
    return !m_known.empty() && std::binary_search(m_known.begin(), m_known.end(),
                                                  DigestOf(configuration, FirstPiece(entry)));
}

KnownRejects::Digest KnownRejects::DigestOf(std::string_view configuration,
                                            std::string_view piece) {
    recorddb::ContentHash hash;
    hash.Update(configuration);
    hash.Update(std::string_view("\0", 1));
    hash.Update(piece);
    const std::string hex = hash.HexDigest();
    Digest digest{};
    std::copy_n(hex.begin(), digest.size(), digest.begin());
    return digest;
}

}  // namespace tool
