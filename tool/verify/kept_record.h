#ifndef TOOL_VERIFY_KEPT_RECORD_H
#define TOOL_VERIFY_KEPT_RECORD_H

#include <cstddef>
#include <cstdint>

#include "tool/packet/importer_fields.h"

namespace tool {

// Where a record stands in the sources.
struct SourcePlace {
    std::size_t source = 0;    // by position in the list of sources
    std::uint64_t record = 0;  // its number in the source, from 1
    std::uint64_t line = 0;    // of its first byte, from 1
};

// A record of a source that was found in the database, kept until that is compared.
struct KeptRecord {
    std::int64_t type = 0;  // id of the record type
    std::int64_t dbid = 0;
    SourcePlace place;
    std::size_t configuration = 0;  // in force for it, by position among those that were
    bool differs = false;           // a difference was reported while it was read
    ImporterFields fields;          // those that have a value
};

}  // namespace tool

#endif
