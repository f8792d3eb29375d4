#ifndef RECORDDB_STORE_ATTACHMENT_TABLE_H
#define RECORDDB_STORE_ATTACHMENT_TABLE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/record.h"
#include "recorddb/sql.h"

namespace recorddb {

// The table of attachments. Every operation throws sql::Error.
class AttachmentTable {
  public:
    // The connection outlives the object.
    explicit AttachmentTable(sql::Connection& connection) : m_connection(connection) {}

    // The attachments of a record in the order in which they were added.
    std::vector<Attachment> Load(std::int64_t recordType, std::int64_t record);

    void Insert(std::int64_t recordType, std::int64_t record, const Attachment& attachment);
    void Remove(std::int64_t dbid);

  private:
    sql::Connection& m_connection;
};

}  // namespace recorddb

#endif
