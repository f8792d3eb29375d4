#ifndef RECORDDB_STORE_KEY_TABLE_H
#define RECORDDB_STORE_KEY_TABLE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The unique keys by which people refer to records. The text of a key is its one field, or its
// fields in order with single blanks between them; a field that is a reference stands there by the
// key of the record it points at. Every operation throws sql::Error.
class KeyTable {
  public:
    // Batch and schema outlive the object.
    KeyTable(WriteBatch& batch, const schema::Schema& schema)
        : m_batch(batch),
          m_connection(batch.GetConnection()),
          m_schema(schema),
          m_types(schema.Types().size()) {}

    // The record of a type whose key fields have these values, in order; 0 for none.
    std::int64_t Find(const schema::RecordType& type, const std::vector<FieldValue>& values);

    // The key of a record; nothing when there is no such record.
    std::optional<std::string> KeyOf(const schema::RecordType& type, std::int64_t dbid);

    // A value as people write it, references by key: one text, those of a list in its order, or
    // none.
    std::vector<std::string> TextsOf(const schema::Field& field, const FieldValue& value);

  private:
    struct TypeStatements {
        sql::Statement* find = nullptr;
        sql::Statement* findAt = nullptr;  // where one record only can be meant
        sql::Statement* key = nullptr;
    };

    std::optional<std::string> KeyOf(const schema::RecordType& type, std::int64_t dbid, int depth);
    std::vector<std::string> KeyParts(const schema::RecordType& type, std::int64_t dbid);
    std::int64_t FindStored(const schema::RecordType& type, const std::vector<FieldValue>& values,
                            const std::vector<const FieldValue*>& wanted);
    sql::Statement& FindStatement(const schema::RecordType& type);
    sql::Statement& FindAtStatement(const schema::RecordType& type);
    sql::Statement& KeyStatement(const schema::RecordType& type);
    TypeStatements& Statements(const schema::RecordType& type) {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    std::vector<TypeStatements> m_types;
    int m_readsLeft = 0;  // of records, for the key that is being put together
};

}  // namespace recorddb

#endif
