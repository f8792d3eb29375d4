#ifndef TOOL_VERIFY_RECORDS_KEPT_RECORD_H
#define TOOL_VERIFY_RECORDS_KEPT_RECORD_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/packet/field_use.h"
#include "tool/packet/source_formats.h"

namespace tool {

// Where records stand: in a source, or in a file that a source is made of.
struct RecordsPlace {
    std::string name;
    std::string unit;  // what is counted there: a "record" or a "row", say

    bool operator==(const RecordsPlace&) const = default;
};

// Where a record stands in the sources.
struct SourcePlace {
    std::size_t source = 0;    // by position in the list of places (see SourceScan)
    std::uint64_t record = 0;  // its number there, from 1
    std::uint64_t line = 0;    // of its first byte, from 1
};

// What a source says about one field of a record, without what stands for it in a packet.
struct KeptField {
    FieldUse use = FieldUse::Unused;
    std::string name;
    std::string value;  // of all but lists, history and attachments
    // The word stands there that empties a field.
    bool clears = false;
    // By what the records are known that a reference, or list of references, points at.
    std::vector<std::string> keys;
    std::vector<HistoryLine> history;
    std::vector<AttachmentLines> attachments;

    bool operator==(const KeptField&) const = default;
};

// A record of a source that was found in the database, kept until that is compared.
struct KeptRecord {
    std::int64_t type = 0;  // id of the record type
    std::int64_t dbid = 0;
    SourcePlace place;
    std::size_t configuration = 0;  // in force for it, by position among those that were
    bool differs = false;           // a difference was reported while it was read
    std::string originalId;
    std::vector<KeptField> fields;  // those that have a value
};

}  // namespace tool

#endif
