#ifndef RECORDDB_STORE_BATCH_KEY_ROWS_H
#define RECORDDB_STORE_BATCH_KEY_ROWS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/key_row.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/record_buffer.h"

namespace recorddb {

// The dbid that is in a display id of a type; 0 for a value that is none.
std::int64_t DbIdIn(const schema::RecordType& type, const FieldValue& displayId);

// The rows of zt_key, which keep the keys and unique fields of spread types where no index of a
// table can: of a type whose records stand on many machines. Display ids need none, since they name
// the dbid. For types that are not spread, all of this does nothing. It knows what is in the
// database only, and writes at once. Operations throw sql::Error.
class KeyRows {
  public:
    // Connection and schema outlive the object.
    KeyRows(sql::Connection& connection, const schema::Schema& schema, Layout layout);

    struct Location {
        std::int64_t dbid;  // 0: there is no such record
        bool isCertain;     // the record is there and has these values in these fields
    };

    // Where the only record stands that can have these values in these fields; nothing where that
    // is not known without asking for the records themselves.
    std::optional<Location> Find(const schema::RecordType& type, const FieldSet& fields,
                                 const std::vector<const FieldValue*>& values);

    // Adds the rows of a new record, or changes those of one whose values are changed in `record`.
    void Add(const schema::RecordType& type, std::int64_t dbid, const RecordBuffer& record);
    void Change(const schema::RecordType& type, std::int64_t dbid, const RecordBuffer& record);

  private:
    const std::vector<FieldSet>& SetsOf(const schema::RecordType& type) const {
        return m_sets[static_cast<std::size_t>(type.id - 1)];
    }
    std::int64_t Lookup(const schema::RecordType& type, const KeyRow& row);
    void Insert(const schema::RecordType& type, std::int64_t dbid, const KeyRow& row);
    void Remove(const schema::RecordType& type, std::int64_t dbid, const KeyRow& row);

    sql::Connection& m_connection;
    std::vector<std::vector<FieldSet>> m_sets;  // by type; none for those that are not spread
    std::vector<bool> m_isSpread;               // by type
};

}  // namespace recorddb

#endif
