#ifndef TOOL_SOURCES_JSON_JSON_READER_H
#define TOOL_SOURCES_JSON_JSON_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/io/byte_source.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// Reads a JSON document, in UTF-8. Its rows are the elements of one array, or the document itself.
//
// Where the text stops being JSON, nothing behind it can be read: the row that is open there, or
// one more, has an error that says so.
class JsonReader final : public RowFileReader {
  public:
    // The way to the array of the rows: names of members, and "*" for every element of an array.
    // Without one, rows are the elements of the document when it is an array, otherwise the
    // document is one row.
    using Path = std::vector<std::string>;

    // `bytes` outlives the object.
    explicit JsonReader(ByteSource& bytes, std::optional<Path> rows = std::nullopt,
                        RowLimits limits = {}, std::size_t chunk = std::size_t{256} * 1024);
    ~JsonReader() override;

    void Read(RowHandler& handler) override;
    std::uint64_t BytesRead() const override;

  private:
    class Characters;
    class Iterator;
    class Events;

    std::unique_ptr<Characters> m_characters;
    std::optional<Path> m_rows;
    RowLimits m_limits;
};

}  // namespace tool

#endif
