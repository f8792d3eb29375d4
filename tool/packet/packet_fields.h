#ifndef TOOL_PACKET_PACKET_FIELDS_H
#define TOOL_PACKET_PACKET_FIELDS_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// The fields of a record, name and value as UTF-8, in the order in which the importer's parser
// gives them.
using PacketFields = std::vector<std::pair<std::string, std::string>>;

// Reads the fields of the record in PACKET, one record, with the importer's parser, escapes
// decoded. Fields without a value are left out, since they say nothing. Returns what is wrong with
// the packet, empty when it could be read.
std::string ReadPacketFields(const std::string& packet, PacketFields& fields);

// What a field of a packet is to the importer whatever the field of the record type is.
enum class FieldRole {
    State,        // the state, which is a field's value only where states are imported
    OriginalId,   // the value that the source knows the record by; a value like others as well
    DuplicateId,  // the original id of the record that this one is a duplicate of
    Value
};

FieldRole RoleOf(std::string_view fieldName, const recorddb::schema::RecordType& type,
                 const ImportConfiguration& configuration);

// The value of the record's original id; empty when it has none.
std::string OriginalIdOf(const PacketFields& fields, const recorddb::schema::RecordType& type,
                         const ImportConfiguration& configuration);

// The value that a history packet's record has its history in; null when it has none.
const std::string* HistoryValue(const PacketFields& fields);

// Comparison without regard to case, folded by Unicode.
bool EqualNoCase(std::string_view a, std::string_view b);

// True for the word that asks for an empty value.
bool IsBlankWord(std::string_view value);

// The text without white space at its ends.
std::string Trimmed(std::string_view text);

}  // namespace tool

#endif
