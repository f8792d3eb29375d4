#ifndef RECORDDB_STORE_BATCH_BATCH_WRITER_H
#define RECORDDB_STORE_BATCH_BATCH_WRITER_H

#include <cstddef>
#include <set>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/pending_changes.h"

namespace recorddb {

// Writes the changes of a batch table by table.
class BatchWriter {
  public:
    // Connection and schema outlive the object.
    BatchWriter(sql::Connection& connection, const schema::Schema& schema, Layout layout)
        : m_connection(connection),
          m_schema(schema),
          m_layout(layout),
          m_shapes(schema.Types().size()) {}

    // Writes changes of what is in the database, in the transaction under way. Throws sql::Error
    // when the engine refuses one or another writer has changed a record; then a part of them may
    // have been made.
    void Write(const PendingChanges& changes);

  private:
    class Pass;

    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    Layout m_layout;
    // By type: the sets of columns for which there are statements.
    std::vector<std::set<std::vector<bool>>> m_shapes;
};

}  // namespace recorddb

#endif
