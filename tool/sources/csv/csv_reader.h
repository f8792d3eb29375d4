#ifndef TOOL_SOURCES_CSV_CSV_READER_H
#define TOOL_SOURCES_CSV_CSV_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/io/byte_source.h"
#include "tool/io/charset_decoder.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// How a CSV file is written. Nothing of it is guessed.
struct CsvFormat {
    static constexpr char kNoQuote = '\0';

    char separator = ',';
    char quote = '"';
    std::string charset = "UTF-8";    // a byte order mark counts for more
    std::vector<std::string> header;  // the columns of a file whose first line is no header
};

// Reads CSV as RFC 4180 has it: cells may stand in quotes, in which separators and line ends are
// text and a quote is doubled. A line ends with CR LF or LF. A quote that does not begin a cell is
// text, and blanks belong to their cell. Empty lines between rows are passed over, but for a file
// with one column.
//
// A row with more or fewer cells than the header has an error, as has one with a byte that is not
// text, and one in whose quotes no end is found; after the latter, reading goes on with the next
// line.
class CsvReader final : public RowFileReader {
  public:
    // `bytes` outlives the object. Throws SourceError when there is no such encoding.
    CsvReader(ByteSource& bytes, CsvFormat format, RowLimits limits = {},
              std::size_t chunk = std::size_t{256} * 1024);

    void Read(RowHandler& handler) override;
    std::uint64_t BytesRead() const override { return m_decoder.BytesRead(); }

  private:
    enum class Outcome { Row, More, Broken };
    struct Cell {
        std::size_t begin = 0;
        std::size_t end = 0;
        bool doubled = false;  // holds doubled quotes
    };

    bool ReadHeader(RowHandler& handler);
    bool NextRow(Row& row);
    bool SkipEmptyLines();
    Outcome CutRow(bool atEnd);
    Outcome CutQuoted(std::size_t& at, bool atEnd);
    Outcome CutPlain(std::size_t& at, bool atEnd);
    bool EndsLine(std::size_t at, bool atEnd) const;
    bool Grow();
    bool CutWholeRow();
    void Fail(std::size_t place, std::string error);
    void CutToLineEnd();
    void FillRow(Row& row);
    void FillCells(Row& row);
    std::string_view TextOf(const Cell& cell);
    void MendText(Row& row);
    void Consume();

    ByteSource& m_bytes;
    CsvFormat m_format;
    RowLimits m_limits;
    CharsetDecoder m_decoder;
    std::string m_text;        // decoded, not yet handed out from m_begin on
    std::size_t m_begin = 0;   // of the row
    std::size_t m_rowEnd = 0;  // of its text, and behind its line end
    std::size_t m_next = 0;
    std::vector<Cell> m_cells;
    std::string m_error;  // of the row
    std::uint64_t m_line = 1;
    std::uint64_t m_number = 0;
    std::size_t m_columns = 0;
    std::string m_cell;
    std::string m_raw;
};

}  // namespace tool

#endif
