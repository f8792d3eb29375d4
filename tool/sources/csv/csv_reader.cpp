#include "tool/sources/csv/csv_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/source_error.h"
#include "tool/io/text_units.h"

namespace tool {

namespace {

std::string CellCount(std::size_t count) {
    return fmt::format("{} {}", count, count == 1 ? "cell" : "cells");
}

}  // namespace

CsvReader::CsvReader(ByteSource& bytes, CsvFormat format, RowLimits limits, std::size_t chunk)
    : m_bytes(bytes),
      m_format(std::move(format)),
      m_limits(limits),
      m_decoder(bytes, m_format.charset, chunk) {}

void CsvReader::Read(RowHandler& handler) {
    Row row;
    if (!ReadHeader(handler)) {
        throw SourceError(m_bytes.Name() +
                          ": the file is empty; its first line must name its columns, or the map "
                          "must name them (header)");
    }
    for (std::size_t column = 0; column < m_columns; ++column) {
        row.tree.AddLastingName(m_format.header[column]);
    }
    while (NextRow(row) && handler.TakeRow(row)) {
        Consume();
    }
}

bool CsvReader::ReadHeader(RowHandler& handler) {
    if (m_format.header.empty()) {
        m_columns = 2;  // so that empty lines before the header are passed over
        if (!SkipEmptyLines() || !CutWholeRow()) {
            return false;
        }
        const std::string_view raw = std::string_view(m_text).substr(m_begin, m_rowEnd - m_begin);
        if (m_decoder.Marked() && FindDecodingMark(raw) != raw.npos) {
            Fail(m_begin, std::string(DescribeDecodingMark(raw[FindDecodingMark(raw)])));
        }
        if (!m_error.empty()) {
            throw SourceError(fmt::format("{}: its header (line {}) cannot be read: {}",
                                          m_bytes.Name(), m_line, m_error));
        }
        for (const Cell& cell : m_cells) {
            m_format.header.emplace_back(TextOf(cell));
        }
        Consume();
    }
    m_columns = m_format.header.size();
    handler.TakeHeader(m_format.header);
    return true;
}

bool CsvReader::NextRow(Row& row) {
    if (!SkipEmptyLines() || !CutWholeRow()) {
        return false;
    }
    row.number = ++m_number;
    row.line = m_line;
    FillRow(row);
    return true;
}

// Drops a row that has been dealt with from the front of the text.
void CsvReader::Consume() {
    m_line += CountLineEnds(std::string_view(m_text).substr(m_begin, m_next - m_begin));
    m_begin = m_next;
}

bool CsvReader::Grow() {
    // Moving the rest only when it is the smaller part keeps the cost linear.
    if (m_begin >= m_text.size() - m_begin) {
        m_text.erase(0, m_begin);
        m_begin = 0;
    }
    return m_decoder.Read(m_text);
}

// False at the end of the file.
bool CsvReader::SkipEmptyLines() {
    while (true) {
        if (m_text.size() - m_begin < 2 && Grow()) {
            continue;
        }
        const std::string_view rest = std::string_view(m_text).substr(m_begin);
        const std::size_t length = rest.starts_with('\n') ? 1 : (rest.starts_with("\r\n") ? 2 : 0);
        if (length == 0 || m_columns < 2) {
            return !rest.empty();
        }
        m_begin += length;
        ++m_line;
    }
}

// Finds the end of the row that begins at m_begin, reading on as far as that takes; sets m_error
// when the row is broken. False at the end of the file.
bool CsvReader::CutWholeRow() {
    bool more = true;
    while (true) {
        m_error.clear();
        const Outcome outcome = CutRow(!more);
        const std::size_t size = m_text.size() - m_begin;
        if (outcome == Outcome::Row && m_rowEnd - m_begin < m_limits.size) {
            return true;
        }
        if (outcome == Outcome::Broken) {
            CutToLineEnd();
            return true;
        }
        if (size >= m_limits.size) {
            Fail(m_begin, fmt::format("the row is not shorter than {} bytes", m_limits.size));
            CutToLineEnd();
            return true;
        }
        // Each look begins at the front again, so the text doubles to keep the sum linear.
        while (more && m_text.size() - m_begin < 2 * size + 1) {
            more = Grow();
        }
    }
}

// Cuts the row that begins at m_begin as far as the text goes; More: it goes on behind that.
CsvReader::Outcome CsvReader::CutRow(bool atEnd) {
    m_cells.clear();
    std::size_t at = m_begin;
    while (true) {
        const bool isQuoted = m_format.quote != CsvFormat::kNoQuote && at < m_text.size() &&
                              m_text[at] == m_format.quote;
        const Outcome outcome = isQuoted ? CutQuoted(at, atEnd) : CutPlain(at, atEnd);
        if (outcome != Outcome::Row) {
            return outcome;
        }
        if (at < m_text.size() && m_text[at] == m_format.separator) {
            ++at;
            continue;
        }
        m_rowEnd = at;
        m_next = at;
        m_next += m_next < m_text.size() && m_text[m_next] == '\r' ? 1 : 0;
        m_next += m_next < m_text.size() ? 1 : 0;
        return Outcome::Row;
    }
}

// A line ends at LF, at CR LF and at the end of the file; a CR alone is text.
bool CsvReader::EndsLine(std::size_t at, bool atEnd) const {
    if (at == m_text.size()) {
        return atEnd;
    }
    return m_text[at] == '\n' ||
           (m_text[at] == '\r' && at + 1 < m_text.size() && m_text[at + 1] == '\n');
}

CsvReader::Outcome CsvReader::CutPlain(std::size_t& at, bool atEnd) {
    Cell cell;
    cell.begin = at;
    while (at < m_text.size() && m_text[at] != m_format.separator && !EndsLine(at, atEnd)) {
        ++at;
    }
    cell.end = at;
    m_cells.push_back(cell);
    return at == m_text.size() && !atEnd ? Outcome::More : Outcome::Row;
}

CsvReader::Outcome CsvReader::CutQuoted(std::size_t& at, bool atEnd) {
    const std::size_t opening = at;
    Cell cell;
    cell.begin = opening + 1;
    std::size_t close = m_text.find(m_format.quote, cell.begin);
    while (close != std::string::npos && close + 1 < m_text.size() &&
           m_text[close + 1] == m_format.quote) {
        cell.doubled = true;
        close = m_text.find(m_format.quote, close + 2);
    }
    if (close == std::string::npos || (close + 1 == m_text.size() && !atEnd)) {
        if (!atEnd) {
            return Outcome::More;
        }
        Fail(opening, "a quote opens and does not close");
        return Outcome::Broken;
    }
    cell.end = close;
    at = close + 1;
    m_cells.push_back(cell);
    const bool needsMore = at < m_text.size() && m_text[at] == '\r' && at + 1 == m_text.size();
    if (needsMore && !atEnd) {
        return Outcome::More;
    }
    if (at < m_text.size() && m_text[at] != m_format.separator && !EndsLine(at, atEnd)) {
        Fail(at, "a quote closes and text follows it; a quote in a quoted cell must be doubled");
        return Outcome::Broken;
    }
    return Outcome::Row;
}

void CsvReader::Fail(std::size_t place, std::string error) {
    const std::uint64_t line =
        m_line + CountLineEnds(std::string_view(m_text).substr(m_begin, place - m_begin));
    m_error = line == m_line ? std::move(error) : fmt::format("{} (line {})", error, line);
}

// Takes the line on which a broken row begins for all of it, so that it costs no other row.
void CsvReader::CutToLineEnd() {
    std::size_t end = m_text.find('\n', m_begin);
    while (end == std::string::npos) {
        const std::size_t size = m_text.size() - m_begin;
        // Of a line that is too long only its end is of use.
        if (size > 2 * m_limits.size) {
            m_text.erase(m_begin + m_limits.size, size - m_limits.size);
        }
        const bool more = Grow();
        end = m_text.find('\n', m_begin);
        if (!more && end == std::string::npos) {
            end = m_text.size();
            break;
        }
    }
    m_rowEnd = end > m_begin && m_text[end - 1] == '\r' ? end - 1 : end;
    m_next = std::min(end + 1, m_text.size());
}

void CsvReader::FillRow(Row& row) {
    row.tree.Clear();
    row.nuls = 0;
    row.error = m_error;
    row.raw = std::string_view(m_text).substr(m_begin, m_rowEnd - m_begin);
    if (row.raw.size() >= m_limits.size) {
        row.raw = {};
    }
    const bool marked = m_decoder.Marked() && FindDecodingMark(row.raw) != row.raw.npos;
    if (row.error.empty()) {
        FillCells(row);
    }
    if (marked) {
        MendText(row);
    }
    if (row.error.empty() && m_cells.size() != m_columns) {
        row.error =
            fmt::format("it has {}, and the header has {}", CellCount(m_cells.size()), m_columns);
    }
    if (!row.error.empty()) {
        row.tree.Clear();
    }
}

void CsvReader::FillCells(Row& row) {
    row.tree.Add(RowTree::kNone, RowTree::Kind::Object, {}, {});
    const std::size_t count = std::min(m_cells.size(), m_columns);
    const bool mends = m_decoder.Marked();
    for (std::size_t column = 0; column < count; ++column) {
        const std::string_view text = TextOf(m_cells[column]);
        if (mends && FindDecodingMark(text) != text.npos) {
            row.tree.AddNamed(RowTree::kRoot, RowTree::Kind::Text, column,
                              ReplaceDecodingMarks(text));
        } else {
            row.tree.AddNamed(RowTree::kRoot, RowTree::Kind::Text, column, text);
        }
    }
}

std::string_view CsvReader::TextOf(const Cell& cell) {
    const std::string_view text =
        std::string_view(m_text).substr(cell.begin, cell.end - cell.begin);
    if (!cell.doubled) {
        return text;
    }
    m_cell.clear();
    for (std::size_t at = 0; at < text.size(); ++at) {
        m_cell += text[at];
        at += text[at] == m_format.quote ? 1 : 0;
    }
    return m_cell;
}

// A row that holds what is no text: NULs became U+FFFD, anything else is an error.
void CsvReader::MendText(Row& row) {
    for (std::size_t at = 0; at < row.raw.size(); ++at) {
        const auto mark = static_cast<unsigned char>(row.raw[at]);
        row.nuls += mark == NulMark ? 1 : 0;
        if (mark > NulMark && row.error.empty()) {
            Fail(m_begin + at, fmt::format("it holds {}, and the file is read as {}",
                                           "a byte that is no character", m_decoder.Charset()));
            row.error = m_error;
        }
    }
    m_raw = ReplaceDecodingMarks(row.raw);
    row.raw = m_raw;
}

}  // namespace tool
