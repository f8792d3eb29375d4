#ifndef TOOL_SURVEY_VALUE_SPOOL_H
#define TOOL_SURVEY_VALUE_SPOOL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "tool/io/output_file.h"
#include "tool/survey/value_counts.h"

namespace tool {

// The values of columns that have too many different ones for memory: their hashes, in temporary
// files that no folder shows. Tells in the end how many different values each column has, and which
// of them are among some that were asked for.
class ValueSpool {
  public:
    using Column = std::uint32_t;

    ValueSpool() = default;

    Column AddColumn() { return m_columns++; }
    // Throws std::system_error when a temporary file cannot be made or written.
    void Add(Column column, ValueHash hash);

    // Called for each column with each of the values looked for that it has, once.
    using Found = std::function<void(Column column, ValueHash hash)>;

    // Returns the number of different values of each column. To be called once, after the last Add.
    // Throws std::system_error, SourceError.
    std::vector<std::uint64_t> CountDistinct(const std::set<ValueHash>& lookedFor,
                                             const Found& found);

  private:
    struct Record {
        ValueHash hash;
        std::uint64_t column;
    };

    // The records whose hashes have the same first bits.
    struct Part {
        Part();
        OutputFile file;
        std::vector<Record> buffer;
        std::uint64_t count = 0;
    };

    static void Write(Part& part);
    static std::vector<Record> Read(Part& part, std::uint64_t rounds, std::uint64_t round);

    Column m_columns = 0;
    std::vector<Part> m_parts;
};

}  // namespace tool

#endif
