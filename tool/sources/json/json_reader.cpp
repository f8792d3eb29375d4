#include "tool/sources/json/json_reader.h"

#include <fmt/format.h>

#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"
#include "tool/sources/json/json_events.h"
#include "tool/sources/json/plain_json.h"
#include "tool/sources/json/row_builder.h"

namespace tool {

namespace {

// Thrown through the parser, which would hold a text of any length in memory.
class TextTooLong : public std::exception {};

}  // namespace

// The bytes of the document one by one, with their lines, and a copy of those of a row.
class JsonReader::Characters {
  public:
    Characters(ByteSource& bytes, std::size_t chunk, std::size_t limit)
        : m_bytes(bytes), m_buffer(chunk, '\0'), m_limit(limit) {}

    // Whether another byte follows.
    bool Has() {
        if (m_at == m_filled) {
            m_filled = m_bytes.Read(m_buffer.data(), m_buffer.size());
            m_at = 0;
            m_read += m_filled;
        }
        return m_at < m_filled;
    }
    char Current() const { return m_buffer[m_at]; }
    void Step() {
        const char c = m_buffer[m_at++];
        m_last = c;
        m_line += c == '\n' ? 1 : 0;
        if (m_isCopying && m_copy.size() < m_limit) {
            m_copy += c;
        }
        if (++m_sinceEvent > m_limit) {
            throw TextTooLong();
        }
    }

    // What has been read from the file, and not handed out.
    std::string_view Ahead() const {
        return std::string_view(m_buffer).substr(m_at, m_filled - m_at);
    }
    // Leaves out that much of it, which ends with a value.
    void Skip(std::size_t size) {
        m_line += CountLineEnds(Ahead().substr(0, size));
        m_at += size;
        NoteEvent();
    }

    // Whether the byte that was read last is a NUL, which the parser takes for the end.
    bool StandsAtNul() const { return m_read > 0 && m_last == '\0'; }

    // An event has come: the parser holds no text now.
    void NoteEvent() { m_sinceEvent = 0; }
    // Begins a copy, with the byte that was read last.
    void BeginCopy() {
        m_isCopying = true;
        m_copy.assign(1, m_last);
    }
    void EndCopy() { m_isCopying = false; }
    const std::string& Copy() const { return m_copy; }
    bool IsCopyWhole() const { return m_copy.size() < m_limit; }

    std::uint64_t Line() const { return m_line; }
    std::uint64_t Read() const { return m_read; }
    std::uint64_t Place() const { return m_read - (m_filled - m_at); }

  private:
    ByteSource& m_bytes;
    std::string m_buffer;
    std::size_t m_limit;
    std::size_t m_at = 0;
    std::size_t m_filled = 0;
    std::uint64_t m_read = 0;
    std::uint64_t m_line = 1;
    std::size_t m_sinceEvent = 0;
    char m_last = '\0';
    bool m_isCopying = false;
    std::string m_copy;
};

// What the parser reads through.
class JsonReader::Iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    Iterator() = default;
    explicit Iterator(Characters& characters) : m_characters(&characters) {}

    char operator*() const { return m_characters->Current(); }
    Iterator& operator++() {
        m_characters->Step();
        return *this;
    }
    Iterator operator++(int) {
        m_characters->Step();
        return *this;
    }
    // Only ever compared with the end, which has no characters.
    bool operator==(const Iterator& /*end*/) const { return !m_characters->Has(); }
    bool operator!=(const Iterator& end) const { return !(*this == end); }

  private:
    Characters* m_characters = nullptr;
};

// Finds the rows in the events of the document, and hands them out.
class JsonReader::Events final : public JsonEvents {
  public:
    Events(Characters& characters, const std::optional<Path>& rows, RowLimits limits,
           RowHandler& handler)
        : m_characters(characters),
          m_path(rows),
          m_limits(limits),
          m_builder(limits),
          m_handler(handler) {}

    bool Value(RowTree::Kind kind, std::string_view text) override {
        m_characters.NoteEvent();
        NoteToken(kind);
        if (m_inRow) {
            m_builder.Value(kind, text);
            return true;
        }
        if (!IsRowNext(kind)) {
            if (kind != RowTree::Kind::Null) {
                m_handler.TakeOutside(Address(), m_characters.Line());
            }
            return true;
        }
        BeginRow();
        m_builder.Value(kind, text);
        m_scalar = ScalarAsItStood(kind, text);
        m_row.raw = m_scalar;
        return HandOut();
    }

    bool Open(RowTree::Kind kind) override {
        m_characters.NoteEvent();
        if (!m_inRow && IsRowNext(kind)) {
            BeginRow();
            m_inRow = true;
            m_characters.BeginCopy();
        }
        if (m_inRow) {
            m_builder.Open(kind);
            return true;
        }
        if (m_outside.size() == m_limits.depth) {
            Fail(
                fmt::format("its values are nested deeper than {}, the most that --max-depth "
                            "allows",
                            m_limits.depth));
            return false;
        }
        m_outside.push_back({kind == RowTree::Kind::List, {}});
        m_inRows = IsArrayOfRows();
        return true;
    }

    bool Close() override {
        m_characters.NoteEvent();
        if (!m_inRow) {
            m_outside.pop_back();
            m_inRows = IsArrayOfRows();
            return true;
        }
        m_builder.Close();
        if (!m_builder.IsComplete()) {
            return true;
        }
        m_inRow = false;
        m_characters.EndCopy();
        m_row.raw = m_characters.IsCopyWhole() ? m_characters.Copy() : std::string_view();
        return HandOut() && (!m_inRows || ReadPlainRows());
    }

    bool Member(std::string_view name) override {
        m_characters.NoteEvent();
        NoteToken(RowTree::Kind::Text);
        if (m_inRow) {
            m_builder.Member(name);
        } else {
            m_outside.back().name = name;
        }
        return true;
    }

    void Fail(const std::string& why) override {
        if (!m_inRow) {
            BeginRow();
            m_characters.BeginCopy();
        }
        m_row.error.clear();
        m_builder.Fail(fmt::format(
            "the file stops being valid JSON in line {}, at byte {}, and nothing behind that has "
            "been read: {}",
            m_characters.Line(), m_characters.Place(), WithoutStaleQuote(why)));
        m_row.isLast = true;
        bool marked = false;
        m_scalar = m_inRow && m_characters.IsCopyWhole() ? m_characters.Copy() : std::string();
        MarkInvalidUtf8(m_scalar.data(), m_scalar.size(), true, marked);
        m_scalar = ReplaceDecodingMarks(m_scalar);
        m_row.raw = m_scalar;
        m_handler.TakeRow(m_row);
    }

  private:
    struct Outside {
        bool isList;
        std::string name;  // of the member that is being read
    };

    // Whether a value that comes now is a row.
    bool IsRowNext(RowTree::Kind kind) const {
        if (m_outside.empty()) {
            return !m_path && kind != RowTree::Kind::List;
        }
        return m_inRows;
    }

    // Whether the innermost array that is open holds the rows.
    bool IsArrayOfRows() const {
        if (m_outside.empty() || !m_outside.back().isList) {
            return false;
        }
        const std::size_t depth = m_outside.size() - 1;
        if (depth != (m_path ? m_path->size() : 0)) {
            return false;
        }
        for (std::size_t i = 0; i < depth; ++i) {
            const std::string& step = (*m_path)[i];
            if (m_outside[i].isList ? step != "*" : step != m_outside[i].name) {
                return false;
            }
        }
        return true;
    }

    static std::string ScalarAsItStood(RowTree::Kind kind, std::string_view text) {
        switch (kind) {
            case RowTree::Kind::Null:
                return "null";
            case RowTree::Kind::Text:
                return nlohmann::json(text).dump();
            default:
                return std::string(text);
        }
    }

    std::string Address() const {
        std::string address;
        for (const Outside& outside : m_outside) {
            address += '/' + (outside.isList ? std::string("*") : outside.name);
        }
        return address.empty() ? "/" : address;
    }

    void BeginRow() {
        m_builder.Begin(m_row);
        m_row.number = ++m_number;
        m_row.line = m_characters.Line();
        m_row.raw = {};
    }

    // What the parser quotes in its messages begins with the last string or number that it read.
    void NoteToken(RowTree::Kind kind) {
        m_quoteIsStale =
            m_quoteIsStale && kind != RowTree::Kind::Text && kind != RowTree::Kind::Number;
    }

    std::string_view WithoutStaleQuote(std::string_view why) const {
        return m_quoteIsStale ? why.substr(0, why.find("; last read: ")) : why;
    }

    bool HandOut() { return m_handler.TakeRow(m_row); }

    // Takes the rows that follow the one that has just ended, each with the comma before it, as
    // long as they are plain and have been read from the file as a whole. The parser, which has
    // read no further than to that end, knows nothing of them, and goes on with what comes behind.
    bool ReadPlainRows() {
        while (true) {
            const std::string_view ahead = m_characters.Ahead();
            const std::size_t begin = PlainRowBegin(ahead);
            if (begin == ahead.npos) {
                return true;
            }
            m_builder.Begin(m_row);
            const std::size_t size = ReadPlainJsonAhead(ahead.substr(begin), m_builder);
            // One that is too large is the parser's, wherever it stands in the buffer.
            if (size == 0 || size >= m_limits.size) {
                return true;
            }
            m_row.number = ++m_number;
            m_row.line = m_characters.Line() + CountLineEnds(ahead.substr(0, begin));
            m_row.raw = ahead.substr(begin, size);
            m_characters.Skip(begin + size);
            m_quoteIsStale = true;
            if (!HandOut()) {
                return false;
            }
        }
    }

    // Where an object or a list begins behind a comma and blanks; npos when something else comes.
    static std::size_t PlainRowBegin(std::string_view ahead) {
        constexpr std::string_view blanks = " \t\r\n";
        const std::size_t comma = ahead.find_first_not_of(blanks);
        if (comma == ahead.npos || ahead[comma] != ',') {
            return ahead.npos;
        }
        const std::size_t begin = ahead.find_first_not_of(blanks, comma + 1);
        const bool isRow = begin != ahead.npos && (ahead[begin] == '{' || ahead[begin] == '[');
        return isRow ? begin : ahead.npos;
    }

    Characters& m_characters;
    const std::optional<Path>& m_path;
    RowLimits m_limits;
    RowBuilder m_builder;
    RowHandler& m_handler;
    Row m_row;
    std::string m_scalar;
    std::vector<Outside> m_outside;  // the objects and arrays around the rows, the innermost last
    bool m_inRows = false;           // the innermost of them is the array of the rows
    bool m_inRow = false;
    bool m_quoteIsStale = false;  // rows were read that the parser has not seen
    std::uint64_t m_number = 0;
};

JsonReader::JsonReader(ByteSource& bytes, std::optional<Path> rows, RowLimits limits,
                       std::size_t chunk)
    : m_characters(std::make_unique<Characters>(bytes, chunk, limits.size)),
      m_rows(std::move(rows)),
      m_limits(limits) {}

JsonReader::~JsonReader() = default;

void JsonReader::Read(RowHandler& handler) {
    Events events(*m_characters, m_rows, m_limits, handler);
    try {
        if (WideJson::sax_parse(Iterator(*m_characters), Iterator(), &events) &&
            m_characters->StandsAtNul()) {
            events.Fail("a NUL character, which is no part of JSON, stands behind the document");
        }
    } catch (const TextTooLong&) {
        events.Fail(fmt::format("a text is not shorter than {} bytes", m_limits.size));
    }
}

std::uint64_t JsonReader::BytesRead() const {
    return m_characters->Read();
}

}  // namespace tool
