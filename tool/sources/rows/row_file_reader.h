#ifndef TOOL_SOURCES_ROWS_ROW_FILE_READER_H
#define TOOL_SOURCES_ROWS_ROW_FILE_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/rows/row.h"

namespace tool {

// Limits that keep a row from taking all memory.
struct RowLimits {
    std::size_t size = std::size_t{16} * 1024 * 1024;  // in bytes; it must stay below
    std::size_t depth = 256;                           // of the lists and objects of a JSON value
};

// Takes the rows of one file, front to back. What it throws ends the reading.
class RowHandler {
  public:
    RowHandler() = default;
    RowHandler(const RowHandler&) = delete;
    RowHandler& operator=(const RowHandler&) = delete;
    virtual ~RowHandler() = default;

    // The names of the columns, before the first row. Of CSV only; called also without any row.
    virtual void TakeHeader(const std::vector<std::string>& /*columns*/) {}

    // Returns false to end the reading. `row` may be changed, and is used again for the next one.
    virtual bool TakeRow(Row& row) = 0;

    // A value outside of the rows of a JSON document, with its address.
    virtual void TakeOutside(const std::string& /*address*/, std::uint64_t /*line*/) {}
};

// Reads a file as rows, once and in constant memory.
class RowFileReader {
  public:
    RowFileReader() = default;
    RowFileReader(const RowFileReader&) = delete;
    RowFileReader& operator=(const RowFileReader&) = delete;
    virtual ~RowFileReader() = default;

    // Reads all of it. To be called once. A row that cannot be used is handed out with an error and
    // the reading goes on, as far as rows can still be told apart. Throws SourceError when the file
    // as a whole cannot be used: it cannot be read, or has no header.
    virtual void Read(RowHandler& handler) = 0;

    // Bytes read so far, for the progress.
    virtual std::uint64_t BytesRead() const = 0;
};

}  // namespace tool

#endif
