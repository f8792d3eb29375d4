#ifndef RECORDDB_SCHEMAFILE_SCHEMA_FILE_H
#define RECORDDB_SCHEMAFILE_SCHEMA_FILE_H

#include <string>

#include "recorddb/model/schema.h"

namespace recorddb::schema {

// Reads a schema from YAML text in UTF-8; file is the name that errors give. Throws SchemaError at
// the first thing that is wrong.
Schema ReadSchema(const std::string& text, const std::string& file);

// Reads the schema file at path. Throws SchemaError, also when the file cannot be read.
Schema ReadSchemaFile(const std::string& path);

}  // namespace recorddb::schema

#endif
