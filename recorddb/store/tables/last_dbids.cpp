#include "recorddb/store/tables/last_dbids.h"

#include <fmt/format.h>

#include "recorddb/errors.h"

namespace recorddb {

LastDbIds::LastDbIds(sql::Connection& connection, const schema::Schema& schema, Layout layout)
    : m_connection(connection), m_layout(layout), m_highest(schema.Types().size()) {}

std::int64_t LastDbIds::Of(const schema::RecordType& type) {
    sql::Statement*& highest = m_highest[static_cast<std::size_t>(type.id - 1)];
    if (m_layout == Layout::Sharded) {
        highest = &m_connection.Prepare("SELECT dbid FROM zt_last_dbid WHERE record_type = $1");
        highest->BindAll(type.id);
    } else if (highest == nullptr) {
        highest = &m_connection.Prepare(
            fmt::format("SELECT max({}) FROM {}", schema::kDbIdName, sql::Quoted(type.name)));
    }
    return sql::QueryInt(*highest).value_or(0);
}

void LastDbIds::Note(const schema::RecordType& type, std::int64_t dbid) {
    if (m_layout == Layout::Plain) {
        return;
    }
    sql::Statement& raise = m_connection.Prepare(
        "UPDATE zt_last_dbid SET dbid = $2 WHERE record_type = $1 AND dbid < $2");
    raise.BindAll(type.id, dbid);
    raise.Execute();
}

std::optional<std::int64_t> LastDbIds::NextAttachment() {
    if (m_layout == Layout::Plain) {
        return std::nullopt;
    }
    sql::Statement& next = m_connection.Prepare(
        "UPDATE zt_last_dbid SET dbid = dbid + 1 WHERE record_type = $1 RETURNING dbid");
    next.BindAll(kAttachmentNumbers);
    const auto number = sql::QueryInt(next);
    if (!number) {
        throw sql::Error(sql::ErrorKind::Corrupt, "zt_last_dbid does not number attachments", "");
    }
    return number;
}

}  // namespace recorddb
