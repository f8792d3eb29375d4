#ifndef TOOL_SOURCES_KIND_SOURCE_RECORD_H
#define TOOL_SOURCES_KIND_SOURCE_RECORD_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/packet/record_cutter.h"
#include "tool/sources/kind/source_values.h"

namespace tool {

// The text of a row among those that are kept (kept_rows.h).
struct RowSpan {
    std::uint32_t file = 0;
    std::uint64_t begin = 0;
    std::uint64_t size = 0;

    bool operator==(const RowSpan&) const = default;
};

// One record of a source, ready for the importer.
struct SourceRecord {
    // The record as a packet of its own; empty when it has a defect.
    std::string packet;
    // The record as it stands in the source or, where it was made of rows, as the record of a
    // packet that was made of them; as UTF-8, with U+FFFD for what is no text; empty when it is
    // TooLong. Valid until the next record is read.
    std::string_view raw;
    std::string_view source;    // name of the source; valid as long as that is open
    std::uint64_t ordinal = 0;  // its number in the source, from 0
    // What it was made of, where it does not stand in the source itself: the "row" or "element" of
    // a file with that number, from 1.
    std::string_view unit = "record";
    std::uint64_t number = 0;
    std::uint64_t line = 0;    // line of its first byte, from 1
    std::uint64_t offset = 0;  // place of its first byte in the source
    RecordDefect defect = RecordDefect::None;
    std::string error;         // what the defect is and where, for people; empty without one
    bool openSection = false;  // a comment, CDATA section or instruction in it does not close
    bool guarded = false;      // its values are, in `packet` and in `raw`
    // What it says, where that was not read from a packet. Valid until the next record is read.
    const SourceValues* values = nullptr;
    // The rows that it was made of, where their texts are kept; as long as `values`.
    const std::vector<RowSpan>* rows = nullptr;

    // The number that people know it by.
    std::uint64_t Number() const { return number > 0 ? number : ordinal + 1; }
};

// All records of a source as one packet.
struct WholePacket {
    std::string text;          // UTF-8 without byte order mark, beginning with kPacketDeclaration
    std::size_t rawBegin = 0;  // where in it the text of the source begins, but for a declaration
    std::string error;  // set when the source holds what is not text; text then has U+FFFD there

    std::string_view Raw() const { return std::string_view(text).substr(rawBegin); }
};

}  // namespace tool

#endif
