#ifndef TOOL_SOURCES_MAPPED_MADE_RECORD_H
#define TOOL_SOURCES_MAPPED_MADE_RECORD_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/kind/source_record.h"
#include "tool/sources/kind/source_values.h"

namespace tool {

// Where a row stands.
struct RowPlace {
    std::uint32_t file = 0;  // by position among the files that are read
    std::uint64_t number = 0;
    std::uint64_t line = 0;
};

// What a step has made of a row, or of several.
struct MadeRecord {
    RowPlace place;
    std::string key;
    std::uint64_t first = 0;    // number of the first record of that key that the step made
    std::string error;          // why it is rejected; empty: it is not
    std::vector<RowSpan> rows;  // that it was made of, where their texts are kept
    SourceValues values;        // as far as they could be made, where it is rejected
};

// A record as bytes: where it comes from, then what it says, whether it is rejected included. Two
// records say the same when the bytes of their content are the same.
void AppendOrigin(const MadeRecord& record, std::string& bytes);
void AppendContent(const MadeRecord& record, std::string& bytes);
// And back.
void ReadRecord(std::string_view bytes, MadeRecord& record);

}  // namespace tool

#endif
