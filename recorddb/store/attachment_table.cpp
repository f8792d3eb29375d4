#include "recorddb/store/attachment_table.h"

namespace recorddb {

std::vector<Attachment> AttachmentTable::Load(std::int64_t recordType, std::int64_t record) {
    sql::Statement& load = m_connection.Prepare(
        "SELECT dbid, field, filename, filesize, description, sha256 FROM zt_attachment "
        "WHERE record_type = $1 AND record = $2 ORDER BY dbid");
    const sql::ResetGuard guard(load);
    load.BindAll(recordType, record);
    std::vector<Attachment> attachments;
    while (load.Step()) {
        attachments.push_back({.dbid = load.Int(0),
                               .field = std::string(load.Text(1)),
                               .fileName = std::string(load.Text(2)),
                               .fileSize = load.Int(3),
                               .description = std::string(load.Text(4)),
                               .sha256 = std::string(load.Text(5))});
    }
    return attachments;
}

void AttachmentTable::Insert(std::int64_t recordType, std::int64_t record,
                             const Attachment& attachment) {
    const auto dbid = m_batch.Numbers().NextAttachment();
    sql::Statement& insert = m_connection.Prepare(
        std::string("INSERT INTO zt_attachment (record_type, record, field, filename, filesize, "
                    "description, sha256, dbid) VALUES ($1, $2, $3, $4, $5, $6, $7, ") +
        (dbid ? "$8)" : std::string(LastDbIds::kNextAttachment) + ")"));
    insert.BindAll(recordType, record, attachment.field, attachment.fileName, attachment.fileSize,
                   attachment.description, attachment.sha256);
    if (dbid) {
        insert.Bind(8, *dbid);
    }
    insert.ExecuteLater();
}

void AttachmentTable::Remove(std::int64_t record, std::int64_t dbid) {
    sql::Statement& remove =
        m_connection.Prepare("DELETE FROM zt_attachment WHERE record = $1 AND dbid = $2");
    remove.BindAll(record, dbid);
    remove.Execute();
}

}  // namespace recorddb
