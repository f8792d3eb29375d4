#include "tool/known_rejects.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <system_error>

#include "tool/content_hash.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// An entry is compared up to the next line that begins like this. It may be a line of the record
// itself: the same record is cut in the same place each time.
bool BeginsAnother(std::string_view line) {
    return line.starts_with("<!-- ") || line.starts_with("</records>");
}

std::string_view FirstPiece(std::string_view entry) {
    std::size_t at = entry.find('\n');
    while (at != std::string_view::npos && !BeginsAnother(entry.substr(at + 1))) {
        at = entry.find('\n', at + 1);
    }
    return entry.substr(0, at == std::string_view::npos ? entry.size() : at + 1);
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
    std::ifstream file(path, std::ios::binary);
    std::string piece;
    for (std::string line; std::getline(file, line);) {
        if (BeginsAnother(line)) {
            m_known.push_back(DigestOf(configuration, piece));
            piece.clear();
        }
        piece += line;
        piece += '\n';
    }
    m_known.push_back(DigestOf(configuration, piece));
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
    ContentHash hash;
    hash.Update(configuration);
    hash.Update({"\0", 1});
    hash.Update(piece);
    const std::string hex = hash.HexDigest();
    Digest digest{};
    std::copy_n(hex.begin(), digest.size(), digest.begin());
    return digest;
}

}  // namespace tool
