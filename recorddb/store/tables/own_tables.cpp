#include "recorddb/store/tables/own_tables.h"

#include <fmt/format.h>

namespace recorddb::schema {

namespace {

// The parts that differ. A primary key of the sharded layout begins with what its table is spread
// by, and covers what takes an index of its own in the other one.
struct LayoutParts {
    std::string_view schemaColumn;
    std::string_view historyKey;
    std::string_view attachmentDbId;
    std::string_view attachmentKey;
    std::string_view duplicateKey;
    std::string_view more;
};

constexpr LayoutParts kPlainParts = {
    .schemaColumn = "",
    .historyKey = "record_type, record, entry",
    .attachmentDbId = "{dbid}",
    .attachmentKey = "",
    .duplicateKey = "record_type, duplicate",
    .more = "CREATE INDEX zt_attachment_record ON zt_attachment (record_type, record);",
};

constexpr LayoutParts kShardedParts = {
    .schemaColumn = ",\n    layout {text} NOT NULL",
    .historyKey = "record, record_type, entry",
    .attachmentDbId = "BIGINT NOT NULL",
    .attachmentKey = ",\n    PRIMARY KEY (record, record_type, dbid)",
    .duplicateKey = "duplicate, record_type",
    .more = R"sql(CREATE TABLE zt_key (
    hash {text} NOT NULL,
    record_type BIGINT NOT NULL,
    field {text} NOT NULL,
    value {text} NOT NULL,
    record BIGINT NOT NULL,
    PRIMARY KEY (hash, record_type, field)
);
CREATE TABLE zt_last_dbid (
    record_type BIGINT NOT NULL PRIMARY KEY,
    dbid BIGINT NOT NULL
);
CREATE TABLE zt_turn (
    number BIGINT NOT NULL
);)sql",
};

std::string Filled(std::string_view part, const sql::Dialect& dialect) {
    return fmt::format(fmt::runtime(part), fmt::arg("dbid", dialect.dbIdType),
                       fmt::arg("text", dialect.textType));
}

}  // namespace

std::vector<std::string_view> OwnTables(Layout layout) {
    std::vector<std::string_view> tables = {
        "zt_schema",    "zt_record_type", "zt_history",        "zt_attachment",     "zt_content",
        "zt_duplicate", "zt_journal",     "zt_journal_reject", "zt_journal_waiting"};
    if (layout == Layout::Sharded) {
        tables.insert(tables.end(), {"zt_key", "zt_last_dbid", "zt_turn"});
    }
    return tables;
}

std::string OwnTablesScript(const sql::Dialect& dialect, Layout layout) {
    const LayoutParts& parts = layout == Layout::Sharded ? kShardedParts : kPlainParts;
    return fmt::format(R"sql(
CREATE TABLE zt_schema (
    format_version BIGINT NOT NULL,
    oldest_readable BIGINT NOT NULL,
    newest_readable BIGINT NOT NULL,
    schema_text {text} NOT NULL{schema_column}
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
    PRIMARY KEY ({history_key})
){clustered};
CREATE TABLE zt_attachment (
    dbid {attachment_dbid},
    record_type BIGINT NOT NULL,
    record BIGINT NOT NULL,
    field {text} NOT NULL,
    filename {text} NOT NULL,
    filesize BIGINT NOT NULL,
    description {text} NOT NULL,
    sha256 {text} NOT NULL{attachment_key}
);
{more}
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
    PRIMARY KEY ({duplicate_key})
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
                       fmt::arg("text", dialect.textType), fmt::arg("blob", dialect.blobType),
                       fmt::arg("clustered", dialect.clusteredTable),
                       fmt::arg("schema_column", Filled(parts.schemaColumn, dialect)),
                       fmt::arg("history_key", parts.historyKey),
                       fmt::arg("attachment_dbid", Filled(parts.attachmentDbId, dialect)),
                       fmt::arg("attachment_key", parts.attachmentKey),
                       fmt::arg("duplicate_key", parts.duplicateKey),
                       fmt::arg("more", Filled(parts.more, dialect)));
}

}  // namespace recorddb::schema
