#ifndef RECORDDB_STORE_TABLES_LAST_DBIDS_H
#define RECORDDB_STORE_TABLES_LAST_DBIDS_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"

namespace recorddb {

// The record_type of zt_last_dbid under which attachments are numbered.
constexpr std::int64_t kAttachmentNumbers = 0;

// The highest dbids that were given out: those of the tables themselves, or what zt_last_dbid says
// of them. It knows what is in the database only. Operations throw sql::Error.
class LastDbIds {
  public:
    // Connection and schema outlive the object.
    LastDbIds(sql::Connection& connection, const schema::Schema& schema, Layout layout);

    // The highest dbid of a type; 0 when there is none.
    std::int64_t Of(const schema::RecordType& type);

    // To be called when a record was inserted at once.
    void Note(const schema::RecordType& type, std::int64_t dbid);

    // The dbid for the next attachment, which the caller inserts in the transaction under way;
    // nothing in the plain layout, where the INSERT finds it as it goes, by kNextAttachment, which
    // saves a round trip.
    std::optional<std::int64_t> NextAttachment();
    static constexpr std::string_view kNextAttachment =
        "(SELECT coalesce(max(dbid), 0) + 1 FROM zt_attachment)";

  private:
    sql::Connection& m_connection;
    Layout m_layout;
    std::vector<sql::Statement*> m_highest;  // by type
};

}  // namespace recorddb

#endif
