#ifndef RECORDDB_STORE_RECORD_TABLES_H
#define RECORDDB_STORE_RECORD_TABLES_H

#include <deque>
#include <map>
#include <utility>

#include "recorddb/schema.h"
#include "recorddb/store/list_table.h"
#include "recorddb/store/record_table.h"

namespace recorddb {

// The tables of all record types, with the statements that they keep.
class RecordTables {
  public:
    // Batch and schema outlive the object.
    RecordTables(WriteBatch& batch, const schema::Schema& schema) {
        for (const schema::RecordType& type : schema.Types()) {
            m_records.emplace_back(batch, type);
            for (const schema::Field& field : type.fields) {
                if (field.kind == schema::FieldKind::ReferenceList) {
                    m_lists.try_emplace({type.id, field.index}, batch, type, field);
                }
            }
        }
    }

    RecordTable& Records(const schema::RecordType& type) {
        return m_records[static_cast<std::size_t>(type.id - 1)];
    }

    // The table of a reference list field.
    ListTable& List(const schema::RecordType& type, const schema::Field& field) {
        return m_lists.at({type.id, field.index});
    }

  private:
    std::deque<RecordTable> m_records;
    std::map<std::pair<std::int64_t, std::size_t>, ListTable> m_lists;
};

}  // namespace recorddb

#endif
