#include "tool/sources/json/json_lines_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"
#include "tool/sources/json/json_events.h"
#include "tool/sources/json/plain_json.h"

namespace tool {

namespace {

constexpr std::string_view kRowBlanks = " \t\r";

// The events of one line.
class LineEvents final : public JsonEvents {
  public:
    explicit LineEvents(RowBuilder& builder) : m_builder(builder) {}

    bool Value(RowTree::Kind kind, std::string_view text) override {
        m_builder.Value(kind, text);
        return true;
    }
    bool Open(RowTree::Kind kind) override {
        m_builder.Open(kind);
        return true;
    }
    bool Close() override {
        m_builder.Close();
        return true;
    }
    bool Member(std::string_view name) override {
        m_builder.Member(name);
        return true;
    }
    void Fail(const std::string& why) override { m_builder.Fail("it is not valid JSON: " + why); }

  private:
    RowBuilder& m_builder;
};

}  // namespace

JsonLinesReader::JsonLinesReader(ByteSource& bytes, RowLimits limits, std::size_t chunk)
    : m_bytes(bytes), m_limits(limits), m_chunk(chunk), m_builder(limits) {}

void JsonLinesReader::Read(RowHandler& handler) {
    Row row;
    SkipByteOrderMark();
    while (NextLine()) {
        const std::string_view line = std::string_view(m_text).substr(m_begin, m_lineEnd - m_begin);
        if (m_tooLong || line.find_first_not_of(kRowBlanks) != line.npos) {
            FillRow(row);
            if (!handler.TakeRow(row)) {
                return;
            }
        }
        m_begin = m_next;
    }
}

void JsonLinesReader::SkipByteOrderMark() {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    while (m_text.size() < mark.size() && Grow()) {
    }
    m_begin = m_text.starts_with(mark) ? mark.size() : 0;
}

bool JsonLinesReader::Grow() {
    // Moving the rest only when it is the smaller part keeps the cost linear.
    if (m_begin >= m_text.size() - m_begin) {
        m_text.erase(0, m_begin);
        m_begin = 0;
    }
    const std::size_t size = m_text.size();
    m_text.resize(size + m_chunk);
    const std::size_t got = m_bytes.Read(m_text.data() + size, m_chunk);
    m_text.resize(size + got);
    m_bytesRead += got;
    return got > 0;
}

// Finds the end of the line that begins at m_begin. Of one that is too long only as much as that
// takes to know is kept. False at the end of the file.
bool JsonLinesReader::NextLine() {
    m_tooLong = false;
    std::size_t searched = 0;  // from m_begin on
    while (true) {
        const std::size_t end = m_text.find('\n', m_begin + searched);
        searched = m_text.size() - m_begin;
        m_tooLong =
            m_tooLong || (end == std::string::npos ? searched : end - m_begin) >= m_limits.size;
        if (end != std::string::npos) {
            m_lineEnd = end;
            m_next = end + 1;
            break;
        }
        if (m_tooLong) {
            m_text.resize(m_begin);
            searched = 0;
        }
        if (!Grow()) {
            m_lineEnd = m_text.size();
            m_next = m_lineEnd;
            if (m_lineEnd == m_begin && !m_tooLong) {
                return false;
            }
            break;
        }
    }
    ++m_line;
    return true;
}

void JsonLinesReader::FillRow(Row& row) {
    m_builder.Begin(row);
    row.number = ++m_number;
    row.line = m_line;
    row.raw = {};
    if (m_tooLong) {
        m_builder.Fail(fmt::format("the line is not shorter than {} bytes", m_limits.size));
        return;
    }
    std::string_view line = std::string_view(m_text).substr(m_begin, m_lineEnd - m_begin);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    row.raw = line;
    if (!ReadPlainJson(line, m_builder)) {
        m_builder.Begin(row);
        LineEvents events(m_builder);
        WideJson::sax_parse(line.begin(), line.end(), &events);
        // The parser takes one for the end.
        if (row.error.empty() && line.find('\0') != std::string_view::npos) {
            m_builder.Fail("a NUL character, which is no part of JSON, stands behind the value");
        }
    }
    if (!row.error.empty()) {
        // The line may hold what is no text.
        m_mended = line;
        bool marked = false;
        MarkInvalidUtf8(m_mended.data(), m_mended.size(), true, marked);
        m_mended = ReplaceDecodingMarks(m_mended);
        row.raw = m_mended;
    }
}

}  // namespace tool
