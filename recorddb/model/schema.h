#ifndef RECORDDB_MODEL_SCHEMA_H
#define RECORDDB_MODEL_SCHEMA_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/model/record_type.h"

namespace recorddb::schema {

// The record types of a database. Made by ReadSchema; does not change, so pointers to its types and
// fields hold for its life, also when it is moved.
class Schema {
  public:
    // types have the ids 1, 2 ... in their order; text is the YAML that they were read from.
    Schema(std::vector<RecordType> types, std::string text);

    // In the order of the schema file.
    const std::vector<RecordType>& Types() const { return m_types; }

    // The type of that name, without regard to case; null when there is none.
    const RecordType* FindType(std::string_view name) const;

    // The type with that id. Throws std::out_of_range when there is none.
    const RecordType& Type(std::int64_t id) const;

    const std::string& Text() const { return m_text; }

  private:
    std::vector<RecordType> m_types;
    std::string m_text;
};

}  // namespace recorddb::schema

#endif
