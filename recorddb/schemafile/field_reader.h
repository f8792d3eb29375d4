#ifndef RECORDDB_SCHEMAFILE_FIELD_READER_H
#define RECORDDB_SCHEMAFILE_FIELD_READER_H

#include "recorddb/schema.h"
#include "recorddb/schemafile/yaml_map.h"

namespace recorddb::schema {

// A field as its entry in a schema file describes it. What it references is known by name only
// until all types are read.
struct ReadField {
    Field field;
    YamlText target;  // of references only
};

// Reads one entry of a type's `fields`. Throws SchemaError.
ReadField ReadFieldEntry(const YamlSource& source, const YamlEntry& entry);

}  // namespace recorddb::schema

#endif
