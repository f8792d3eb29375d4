#ifndef TOOL_LOAD_SINKS_REJECTED_RECORD_H
#define TOOL_LOAD_SINKS_REJECTED_RECORD_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/load/sinks/place.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/record_cutter.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// A record that was refused, and why.
struct RejectedRecord {
    Place place = 0;              // among the records of the load
    std::string source;           // name of its source
    std::string unit = "record";  // what it was made of: a "record", or a "row" or an "element"
    std::uint64_t number = 0;     // the number of that in the source, from 1
    std::uint64_t line = 0;       // line of its first byte, from 1
    std::string sourceId;         // its original id, empty when it cannot be made out
    std::string reason;
    std::string_view raw;  // its text as it stands in the source; valid UTF-8
    RecordDefect defect = RecordDefect::None;
    bool guarded = false;       // the values in `raw` are
    std::vector<RowSpan> rows;  // that it was made of, where their texts are kept
    bool openSection = false;   // a comment, CDATA section or instruction in it does not close
    // That it was refused under, when another one is in force now. Outlives the telling.
    const ImportConfiguration* configuration = nullptr;
};

}  // namespace tool

#endif
