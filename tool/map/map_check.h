#ifndef TOOL_MAP_MAP_CHECK_H
#define TOOL_MAP_MAP_CHECK_H

#include <array>
#include <string_view>

#include "recorddb/schema.h"
#include "tool/map/map_file.h"

namespace tool {

// The fields of a step that are none of its record type.
inline constexpr std::string_view kDuplicateField = "duplicate_of";
inline constexpr std::array<std::string_view, 6> kHistoryFields = {"id",     "when",   "who",
                                                                   "action", "before", "after"};
inline constexpr std::array<std::string_view, 4> kAttachmentFields = {"id", "path", "size",
                                                                      "description"};

// Throws MapError when the steps of a map do not fit the record types of a database: a type or a
// field is not there, or something is done to a value that its field has no use for.
void CheckMap(const MapFile& map, const recorddb::schema::Schema& schema);

// The field of the type that `field` refers to by which its references are looked up: `by` of the
// value, else the type's key. Null when the key has several fields.
const recorddb::schema::Field* LookUpField(const MapValue& value,
                                           const recorddb::schema::Field& field,
                                           const recorddb::schema::Schema& schema);

}  // namespace tool

#endif
