#ifndef RECORDDB_STORE_ATTACHMENT_TABLE_H
#define RECORDDB_STORE_ATTACHMENT_TABLE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/record.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The table of attachments. Every operation throws sql::Error.
class AttachmentTable {
  public:
    // The batch outlives the object.
    explicit AttachmentTable(WriteBatch& batch)
        : m_batch(batch), m_connection(batch.GetConnection()) {}

    // The attachments of a record in the order in which they were added.
    std::vector<Attachment> Load(std::int64_t recordType, std::int64_t record);

    void Insert(std::int64_t recordType, std::int64_t record, const Attachment& attachment);
    void Remove(std::int64_t record, std::int64_t dbid);

  private:
    WriteBatch& m_batch;
    sql::Connection& m_connection;
};

}  // namespace recorddb

#endif
