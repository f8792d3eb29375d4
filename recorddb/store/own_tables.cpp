#include "recorddb/store/own_tables.h"

#include <fmt/format.h>

namespace recorddb::schema {

std::string OwnTablesScript(const sql::Dialect& dialect) {
    return fmt::format(R"sql(
CREATE TABLE zt_schema (
    format_version BIGINT NOT NULL,
    oldest_readable BIGINT NOT NULL,
    newest_readable BIGINT NOT NULL,
    schema_text {text} NOT NULL
);
CREATE TABLE zt_record_type (
    id BIGINT NOT NULL PRIMARY KEY,
    name {text} NOT NULL UNIQUE,
    kind BIGINT NOT NULL
);
CREATE TABLE zt_history (
    record_type BIGINT NOT NULL,
    record BIGINT NOT NULL,
    entry BIGINT NOT NULL,
    field {text} NOT NULL,
    action_time {text} NOT NULL,
    expiry_time {text},
    user_name {text} NOT NULL,
    action_name {text} NOT NULL,
    old_state {text} NOT NULL,
    new_state {text} NOT NULL,
    comments {text} NOT NULL,
    PRIMARY KEY (record_type, record, entry)
){clustered};
CREATE TABLE zt_attachment (
    dbid {dbid},
    record_type BIGINT NOT NULL,
    record BIGINT NOT NULL,
    field {text} NOT NULL,
    filename {text} NOT NULL,
    filesize BIGINT NOT NULL,
    description {text} NOT NULL,
    sha256 {text} NOT NULL
);
CREATE INDEX zt_attachment_record ON zt_attachment (record_type, record);
CREATE INDEX zt_attachment_content ON zt_attachment (sha256);
CREATE TABLE zt_content (
    sha256 {text} NOT NULL,
    chunk BIGINT NOT NULL,
    data {blob} NOT NULL,
    PRIMARY KEY (sha256, chunk)
);
CREATE TABLE zt_duplicate (
    record_type BIGINT NOT NULL,
    duplicate BIGINT NOT NULL,
    original BIGINT NOT NULL,
    action_time {text} NOT NULL,
    PRIMARY KEY (record_type, duplicate)
){clustered};
CREATE INDEX zt_duplicate_original ON zt_duplicate (record_type, original);
CREATE TABLE zt_journal (
    source_sha256 {text} NOT NULL,
    configuration_sha256 {text} NOT NULL,
    source_name {text} NOT NULL,
    next_ordinal BIGINT NOT NULL,
    complete BIGINT NOT NULL,
    created BIGINT NOT NULL,
    updated BIGINT NOT NULL,
    history BIGINT NOT NULL,
    attachments BIGINT NOT NULL,
    duplicates BIGINT NOT NULL,
    rejected BIGINT NOT NULL,
    skipped BIGINT NOT NULL,
    run BIGINT NOT NULL,
    PRIMARY KEY (source_sha256, configuration_sha256)
){clustered};
CREATE TABLE zt_journal_reject (
    source_sha256 {text} NOT NULL,
    configuration_sha256 {text} NOT NULL,
    ordinal BIGINT NOT NULL,
    PRIMARY KEY (source_sha256, configuration_sha256, ordinal)
){clustered};
CREATE TABLE zt_journal_waiting (
    source_sha256 {text} NOT NULL,
    configuration_sha256 {text} NOT NULL,
    ordinal BIGINT NOT NULL,
    PRIMARY KEY (source_sha256, configuration_sha256, ordinal)
){clustered};
)sql",
                       fmt::arg("dbid", dialect.dbIdType), fmt::arg("text", dialect.textType),
                       fmt::arg("blob", dialect.blobType),
                       fmt::arg("clustered", dialect.clusteredTable));
}

}  // namespace recorddb::schema
