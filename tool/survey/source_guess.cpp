#include "tool/survey/source_guess.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>
#include <vector>

#include "tool/io/watched_file.h"

namespace tool {

namespace {

// What is looked at of a file to find its separator.
constexpr std::size_t kHeadSize = std::size_t{256} * 1024;

// Finds out whether bytes that come in pieces are UTF-8.
class Utf8Check {
  public:
    // Returns whether all is UTF-8 so far.
    bool Add(std::string_view piece) {
        m_text.append(piece);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(m_text.data());
        const auto size = static_cast<std::int64_t>(m_text.size());
        std::int64_t at = 0;
        while (at < size) {
            if (bytes[at] < 0x80) {
                ++at;
                continue;
            }
            const std::int64_t begin = at;
            UChar32 character = 0;
            U8_NEXT(bytes, at, size, character);
            if (character < 0) {
                // The end of a piece may part a character, which is four bytes at the most.
                m_text.erase(0, static_cast<std::size_t>(begin));
                return m_text.size() < 4;
            }
        }
        m_text.clear();
        return true;
    }
    bool IsWhole() const { return m_text.empty(); }

  private:
    std::string m_text;
};

bool HasByteOrderMark(std::string_view head) {
    return head.starts_with("\xEF\xBB\xBF") || head.starts_with("\xFE\xFF") ||
           head.starts_with("\xFF\xFE");
}

// Whether a file is UTF-8, or says itself in what it is written.
bool TellsItsEncoding(const SurveyFile& file) {
    WatchedFile bytes(file.path, file.name);
    std::vector<char> piece(kPieceSize);
    Utf8Check check;
    bool isFirst = true;
    while (const std::size_t got = bytes.Read(piece.data(), piece.size())) {
        const std::string_view text(piece.data(), got);
        if (isFirst && HasByteOrderMark(text)) {
            return true;
        }
        isFirst = false;
        if (!check.Add(text)) {
            return false;
        }
    }
    return check.IsWhole();
}

// The beginning of a file, as text.
std::string HeadOf(const SurveyFile& file, const std::string& charset) {
    WatchedFile bytes(file.path, file.name);
    CharsetDecoder decoder(bytes, charset);
    std::string head;
    while (head.size() < kHeadSize && decoder.Read(head)) {
    }
    return head;
}

// How well a text reads as CSV with a separator.
class CsvTrial final : public RowHandler {
  public:
    void TakeHeader(const std::vector<std::string>& columns) override {
        m_columns = columns.size();
    }
    bool TakeRow(Row& row) override {
        ++(row.error.empty() ? m_good : m_bad);
        return true;
    }
    // Better ones are greater.
    std::tuple<bool, std::uint64_t, std::size_t> Score() const {
        constexpr std::uint64_t most = 1000;
        const std::uint64_t rows = m_good + m_bad;
        return {m_columns > 1, rows == 0 ? most : m_good * most / rows, m_columns};
    }

  private:
    std::size_t m_columns = 0;
    std::uint64_t m_good = 0;
    std::uint64_t m_bad = 0;
};

char GuessSeparator(const std::string& head, char expected) {
    char best = expected;
    std::optional<std::tuple<bool, std::uint64_t, std::size_t>> bestScore;
    for (const char separator : {expected, ',', ';', '\t', '|'}) {
        TextBytes bytes(head);
        CsvTrial trial;
        CsvFormat format;
        format.separator = separator;
        try {
            CsvReader(bytes, format).Read(trial);
        } catch (const SourceError&) {
            continue;
        }
        if (!bestScore || trial.Score() > *bestScore) {
            best = separator;
            bestScore = trial.Score();
        }
    }
    return best;
}

// Looks at what a document has on its first level, without keeping any of it.
class TopLevel final : public RowHandler {
  public:
    bool TakeRow(Row& /*row*/) override { return true; }
    void TakeOutside(const std::string& address, std::uint64_t /*line*/) override {
        const std::size_t end = address.find('/', 1);
        const std::string name = address.substr(1, end == address.npos ? end : end - 1);
        m_isOdd |= m_members.size() == kMostMembers || name.find('~') != name.npos;
        if (m_isOdd) {
            return;
        }
        Member& member = m_members[name];
        if (end == address.npos) {
            return;
        }
        member.isPlain = false;
        member.isListOfObjects |= address.substr(end).starts_with("/*/");
    }

    // The one member that is a list of objects, while all others are plain values.
    std::optional<std::string> OnlyList() const {
        std::optional<std::string> only;
        if (m_isOdd) {
            return only;
        }
        for (const auto& [name, member] : m_members) {
            if (member.isPlain) {
                if (name == "id" || name == "key") {
                    return std::nullopt;
                }
                continue;
            }
            if (!member.isListOfObjects || only) {
                return std::nullopt;
            }
            only = name;
        }
        return only;
    }

  private:
    static constexpr std::size_t kMostMembers = 200;
    struct Member {
        bool isPlain = true;
        bool isListOfObjects = false;
    };
    std::map<std::string, Member> m_members;
    bool m_isOdd = false;  // no wrapping: it has very many members, or strange ones
};

// A document that wraps its rows, {"total": 2, "issues": [...]}, is no row itself.
std::optional<JsonReader::Path> GuessRows(const SurveyFile& file) {
    WatchedFile bytes(file.path, file.name);
    std::array<char, 256> head{};
    std::string_view begin(head.data(), bytes.Read(head.data(), head.size()));
    begin.remove_prefix(begin.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    const std::size_t first = begin.find_first_not_of(" \t\r\n");
    if (first == begin.npos || begin[first] != '{') {
        return std::nullopt;
    }
    // Rows are looked for at an address that cannot occur, so that all values are told as outside
    // of the rows.
    WatchedFile again(file.path, file.name);
    TopLevel level;
    JsonReader(again, JsonReader::Path{std::string(1, '\0')}).Read(level);
    const std::optional<std::string> name = level.OnlyList();
    return name ? std::optional(JsonReader::Path{*name}) : std::nullopt;
}

}  // namespace

SourceGuess GuessSource(const SurveyGroup& group, const SurveyOptions& options) {
    SourceGuess guess;
    if (group.format == MapFormat::Json) {
        guess.rows = GuessRows(group.files.front());
    }
    if (group.format != MapFormat::Csv) {
        return guess;
    }
    if (options.encoding) {
        guess.csv.charset = *options.encoding;
    } else if (!std::all_of(group.files.begin(), group.files.end(), TellsItsEncoding)) {
        guess.csv.charset = "windows-1252";
        guess.isEncodingGuessed = true;
    }
    const std::string head = HeadOf(group.files.front(), guess.csv.charset);
    guess.csv.separator =
        options.separator ? *options.separator : GuessSeparator(head, group.separator);
    guess.isSeparatorGuessed = !options.separator && guess.csv.separator != group.separator;
    return guess;
}

}  // namespace tool
