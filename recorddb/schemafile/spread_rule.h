#ifndef RECORDDB_SCHEMAFILE_SPREAD_RULE_H
#define RECORDDB_SCHEMAFILE_SPREAD_RULE_H

#include <vector>

#include "recorddb/schemafile/type_reader.h"
#include "recorddb/schemafile/yaml_map.h"

namespace recorddb::schema {

// Decides which types are spread, once references are resolved: those with states, those that the
// file says are, and all that refer to one of them, since a type that stands on every machine can
// only rely on others that do. Throws SchemaError where the file denies one that has to be.
void DecideSpread(const YamlSource& source, std::vector<ReadType>& types);

}  // namespace recorddb::schema

#endif
