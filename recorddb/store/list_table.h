#ifndef RECORDDB_STORE_LIST_TABLE_H
#define RECORDDB_STORE_LIST_TABLE_H

#include <cstdint>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The table of one reference list. Every operation throws sql::Error.
class ListTable {
  public:
    // Batch, type and field outlive the object.
    ListTable(WriteBatch& batch, const schema::RecordType& type, const schema::Field& field)
        : m_batch(batch), m_connection(batch.GetConnection()), m_type(type), m_field(field) {}

    // The list of a record: a ReferenceList, or no value when it is empty.
    FieldValue Load(std::int64_t record);

    // Turns the list that is stored for a record, `saved`, into `list`. What both begin with is not
    // written again. Writes to the database, not to the batch.
    void Save(std::int64_t record, const FieldValue& saved, const FieldValue& list);

  private:
    WriteBatch& m_batch;
    sql::Connection& m_connection;
    const schema::RecordType& m_type;
    const schema::Field& m_field;
    sql::Statement* m_load = nullptr;
    sql::Statement* m_cut = nullptr;
    sql::Statement* m_add = nullptr;
};

}  // namespace recorddb

#endif
