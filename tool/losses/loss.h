#ifndef TOOL_LOSSES_LOSS_H
#define TOOL_LOSSES_LOSS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// What the packet rules drop or change without an error.
enum class LossKind {
    LongHistoryLine,       // a history line of seven or more columns
    HistoryBeyondLimit,    // history entries after the 501st of a record
    IncompleteAttachment,  // lines after the last whole group of four
    UnseenRecord,          // what looks like a record and is not read as one
    NamelessField,         // a field element without a name
    NestedField,           // a field element inside another one
    UnreadField,           // a field after the place where the record ends for the importer
    ChangedText,           // a value that the decoding of escapes makes another one
    SkippedField,          // a field of a type that is never written
    RepeatedField,         // a field named again in the same record; the last one counts
    ClearedValue,          // "BLANK" in a record that is created: there is nothing to clear
    UnusedField,           // a field of a history or attachments packet that has no use there
    EmptyPacket,           // a data packet without a record
    NothingImported,       // import_data names no kind of data
    UnusedMapping,         // a mapping that names no field, or one that no import asks for
    NoConfiguration,       // data before any configuration
    CutShort,              // a packet whose elements do not end
    OutsideRecords,        // what has no business between or after the records of a packet
    UnreachableKey,        // a key that no reference can express
    MistakenReference,     // a reference to such a key that is taken for one to another record
    UnreadAddress,         // values of a mapped source that no step reads
    MissingAddress,        // what a map reads, or ignores, and no row has
    ReplacedCharacter,     // control characters that a map replaces
    CutText                // texts that a map cuts
};

// All of them, in their order.
inline constexpr std::array kLossKinds = {
    LossKind::LongHistoryLine, LossKind::HistoryBeyondLimit, LossKind::IncompleteAttachment,
    LossKind::UnseenRecord,    LossKind::NamelessField,      LossKind::NestedField,
    LossKind::UnreadField,     LossKind::ChangedText,        LossKind::SkippedField,
    LossKind::RepeatedField,   LossKind::ClearedValue,       LossKind::UnusedField,
    LossKind::EmptyPacket,     LossKind::NothingImported,    LossKind::UnusedMapping,
    LossKind::NoConfiguration, LossKind::CutShort,           LossKind::OutsideRecords,
    LossKind::UnreachableKey,  LossKind::MistakenReference,  LossKind::UnreadAddress,
    LossKind::MissingAddress,  LossKind::ReplacedCharacter,  LossKind::CutText};

// One loss with its place. Texts in UTF-8.
struct Loss {
    LossKind kind = LossKind::ChangedText;
    std::string source;           // name of the source
    std::uint64_t record = 0;     // number of the record in the source, from 1; 0: no record's
    std::uint64_t line = 0;       // line in the source, from 1; 0: the source as a whole
    std::string sourceId;         // the record's original id, empty when it has none
    std::string field;            // empty when it is no field's
    std::string text;             // what is lost and why, for people
    std::string unit = "record";  // what `record` counts: a "row", say
};

// The word for a kind in reports that programs read, such as "long-history-line".
std::string_view LossKindName(LossKind kind);

// True for a kind that every load warns of; the others are told by its rehearsal.
bool IsToldByEveryLoad(LossKind kind);

// The kind as a heading for people, such as "history lines of seven or more columns".
std::string_view LossKindTitle(LossKind kind);

}  // namespace tool

#endif
