#ifndef RECORDDB_SCHEMAFILE_TYPE_READER_H
#define RECORDDB_SCHEMAFILE_TYPE_READER_H

#include <optional>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/schemafile/yaml_map.h"

namespace recorddb::schema {

// A reference field whose target is known by name only.
struct PendingReference {
    std::size_t field;  // position in RecordType::fields
    YamlText target;
};

struct ReadType {
    RecordType type;
    std::vector<PendingReference> references;
    YAML::Mark prefixPlace;  // of types with states only
    std::optional<bool> spread;
    YAML::Mark spreadPlace;  // of types that say whether they are spread
};

// Reads one entry of `record_types`, all but what needs the other types. Throws SchemaError.
ReadType ReadTypeEntry(const YamlSource& source, const YamlEntry& entry);

}  // namespace recorddb::schema

#endif
