#ifndef TOOL_SOURCES_JSON_JSON_LINES_READER_H
#define TOOL_SOURCES_JSON_JSON_LINES_READER_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "tool/io/byte_source.h"
#include "tool/sources/json/row_builder.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// Reads JSON Lines: a JSON value on each line, in UTF-8. Empty lines are passed over. A line that
// is no JSON costs no other one.
class JsonLinesReader final : public RowFileReader {
  public:
    // `bytes` outlives the object.
    explicit JsonLinesReader(ByteSource& bytes, RowLimits limits = {},
                             std::size_t chunk = std::size_t{256} * 1024);

    void Read(RowHandler& handler) override;
    std::uint64_t BytesRead() const override { return m_bytesRead; }

  private:
    bool Grow();
    bool NextLine();
    void SkipByteOrderMark();
    void FillRow(Row& row);

    ByteSource& m_bytes;
    RowLimits m_limits;
    std::size_t m_chunk;
    RowBuilder m_builder;
    std::string m_text;
    std::size_t m_begin = 0;    // of the line
    std::size_t m_lineEnd = 0;  // of its text
    std::size_t m_next = 0;     // behind its end
    bool m_tooLong = false;
    std::uint64_t m_line = 0;
    std::uint64_t m_number = 0;
    std::uint64_t m_bytesRead = 0;
    std::string m_mended;
};

}  // namespace tool

#endif
