#ifndef RECORDDB_EDITING_WATCHED_VALUES_H
#define RECORDDB_EDITING_WATCHED_VALUES_H

#include <utility>
#include <vector>

#include "recorddb/editing/edited_record.h"
#include "recorddb/schema.h"
#include "recorddb/store/key_table.h"
#include "recorddb/written_value.h"

namespace recorddb {

// Notes the values that records get in the fields that somebody watches.
class WatchedValues {
  public:
    // Schema and table outlive the object.
    WatchedValues(const schema::Schema& schema, KeyTable& keys)
        : m_keys(keys), m_watched(schema.Types().size()) {}

    // Null stands for the unique key of the type.
    void Watch(const schema::RecordType& type, const schema::Field* field);
    void WatchNothing();

    // Notes what has been written of a record, whose buffer still tells what has changed. Throws
    // sql::Error.
    void Note(const EditedRecord& record);

    std::vector<WrittenValue> Take() { return std::exchange(m_written, {}); }

  private:
    using Fields = std::vector<const schema::Field*>;

    void NoteKey(const EditedRecord& record);
    void NoteField(const EditedRecord& record, const schema::Field& field);

    KeyTable& m_keys;
    std::vector<Fields> m_watched;  // by type
    std::vector<WrittenValue> m_written;
};

}  // namespace recorddb

#endif
