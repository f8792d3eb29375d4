#ifndef TOOL_PACKET_FIELD_USE_H
#define TOOL_PACKET_FIELD_USE_H

#include <string_view>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// What an import does with a field of a record.
enum class FieldUse {
    Value,          // writes it as it is
    Reference,      // makes it point at a record
    ReferenceList,  // adds its items
    History,        // reads entries from it
    Attachments,    // reads attachments from it
    State,          // moves the record there
    LookedUp,       // finds the record by it
    DuplicateMark,  // finds the record that this one repeats by it
    NeverWritten,   // passes it over: the database gives the field its value
    Unused,         // does not look at it
    Unknown         // refuses the record, since its type has no such field
};

// Says what the import under CONFIGURATION does with the field NAME, which is not empty, of records
// of TYPE.
FieldUse UseOf(std::string_view name, const ImportConfiguration& configuration,
               const recorddb::schema::RecordType& type);

}  // namespace tool

#endif
