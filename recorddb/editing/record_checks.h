#ifndef RECORDDB_EDITING_RECORD_CHECKS_H
#define RECORDDB_EDITING_RECORD_CHECKS_H

#include "platform/messages/pamessage.h"
#include "recorddb/editing/edited_record.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// Checks a record as a whole, also against other records. A value that is wrong by itself was
// refused when it was set. Each check returns the message of the first fault, or one with id 0, and
// throws sql::Error.
class RecordChecks {
  public:
    // All of them outlive the object.
    RecordChecks(const schema::Schema& schema, RecordTables& tables, KeyTable& keys)
        : m_schema(schema), m_tables(tables), m_keys(keys) {}

    // Required fields that are empty, values that must be unique and are not.
    PaMessage Check(const EditedRecord& record);

    PaMessage CheckUnique(const EditedRecord& record);

    // Finds the reference that made the engine refuse the record: one to a record that is gone.
    PaMessage CheckReferences(const EditedRecord& record);

  private:
    PaMessage NotUnique(const EditedRecord& record, const FieldSet& fields, std::int64_t twin);
    bool Exists(const schema::Field& field, std::int64_t target);

    const schema::Schema& m_schema;
    RecordTables& m_tables;
    KeyTable& m_keys;
};

}  // namespace recorddb

#endif
