#ifndef TOOL_PACKET_FIELD_USE_H
#define TOOL_PACKET_FIELD_USE_H

#include <string>
#include <string_view>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/importer_fields.h"

namespace tool {

// What an import does with a field of a record.
enum class FieldUse {
    Value,          // writes it as it is
    Reference,      // makes it point at a record
    ReferenceList,  // adds its items
    History,        // reads entries from it
    Attachments,    // reads attachments from it
    State,          // moves the record there, where states are imported
    LookedUp,       // finds the record by it
    DuplicateMark,  // finds the record that this one repeats by it
    NeverWritten,   // passes it over: the database gives the field its value
    Unused,         // does not look at it
    Unknown         // refuses the record, since its type has no such field
};

// Says what the import under `configuration` does with the field `name` of records of `type`. The
// original id is also written as any other value is, except where it is only LookedUp.
FieldUse UseOf(std::string_view name, const ImportConfiguration& configuration,
               const recorddb::schema::RecordType& type);

// The value by which the source knows the record that has `fields`, as the import takes it: the
// last one that is not empty. Empty when the record has none.
std::string OriginalIdOf(const ImporterFields& fields, const ImportConfiguration& configuration,
                         const recorddb::schema::RecordType& type);

}  // namespace tool

#endif
