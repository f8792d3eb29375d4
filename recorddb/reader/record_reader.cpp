#include "recorddb/reader/record_reader.h"

#include <fmt/format.h>

#include "recorddb/editing/value_text.h"
#include "recorddb/files/content_hash.h"
#include "recorddb/store/tables.h"

namespace recorddb {

namespace {

std::vector<std::int64_t> TargetsOf(const schema::Field& field, const FieldValue& value) {
    if (const auto* const list = std::get_if<ReferenceList>(&value)) {
        return *list;
    }
    const auto* const number = std::get_if<std::int64_t>(&value);
    const bool isTarget = field.kind == schema::FieldKind::Reference && number != nullptr;
    return isTarget ? std::vector<std::int64_t>{*number} : std::vector<std::int64_t>();
}

}  // namespace

RecordReader::RecordReader(Database& database)
    : m_database(database),
      m_tables(database.GetConnection(), database.GetSchema()),
      m_keys(database.GetConnection(), database.GetSchema()),
      m_history(database.GetConnection()),
      m_attachments(database.GetConnection()),
      m_contents(database.GetConnection()),
      m_duplicates(database.GetConnection()) {}

std::int64_t RecordReader::Count(const schema::RecordType& type) {
    sql::Statement& count = m_database.GetConnection().Prepare(
        fmt::format("SELECT count(*) FROM {}", schema::Quoted(type.name)));
    return sql::QueryInt(count).value_or(0);
}

std::optional<RecordView> RecordReader::Next(const schema::RecordType& type, std::int64_t after) {
    const auto dbid = NextDbId(type, after);
    return dbid ? Get(type, *dbid) : std::nullopt;
}

std::optional<std::int64_t> RecordReader::NextDbId(const schema::RecordType& type,
                                                   std::int64_t after) {
    return m_tables.Records(type).NextAfter(after);
}

std::optional<RecordView> RecordReader::Get(const schema::RecordType& type, std::int64_t dbid) {
    RecordBuffer buffer(type.fields.size());
    const auto version = m_tables.Records(type).Load(dbid, buffer);
    if (!version) {
        return std::nullopt;
    }
    RecordView view{.type = &type, .dbid = dbid, .version = *version, .values = {}, .targets = {}};
    for (const schema::Field& field : type.fields) {
        if (field.kind == schema::FieldKind::DbId) {
            buffer.SetSaved(field.index, dbid);
        } else if (field.kind == schema::FieldKind::ReferenceList) {
            buffer.SetSaved(field.index, m_tables.List(type, field).Load(dbid));
        }
        const FieldValue& value = buffer.Get(field.index);
        view.values.push_back(m_keys.TextsOf(field, value));
        view.targets.push_back(TargetsOf(field, value));
    }
    return view;
}

std::optional<RecordView> RecordReader::Find(const schema::RecordType& type,
                                             std::string_view identifier) {
    const KeyMatch match = m_keys.Find(type, identifier);
    if (match.dbid != 0) {
        return Get(type, match.dbid);
    }
    const auto dbid = IntegerOf(identifier);
    return dbid ? Get(type, *dbid) : std::nullopt;
}

std::vector<std::int64_t> RecordReader::FindByValue(const schema::RecordType& type,
                                                    const schema::Field& field,
                                                    std::string_view value, std::size_t limit) {
    sql::Statement& find = m_database.GetConnection().Prepare(
        fmt::format("SELECT {0} FROM {1} WHERE {2} = $1 ORDER BY {0}", schema::dbIdName,
                    schema::Quoted(type.name), schema::Quoted(field.name)));
    const sql::ResetGuard guard(find);
    const bool isNumber = field.kind == schema::FieldKind::Integer ||
                          field.kind == schema::FieldKind::Reference ||
                          field.kind == schema::FieldKind::DbId;
    if (isNumber) {
        find.BindAll(IntegerOf(value));
    } else {
        find.BindAll(value);
    }
    std::vector<std::int64_t> dbids;
    while (dbids.size() < limit && find.Step()) {
        dbids.push_back(find.Int(0));
    }
    return dbids;
}

std::string RecordReader::Key(const schema::RecordType& type, std::int64_t dbid) {
    return m_keys.KeyOf(type, dbid).value_or("");
}

std::vector<HistoryEntry> RecordReader::History(const RecordView& record) {
    return m_history.Load(record.type->id, record.dbid);
}

std::vector<Attachment> RecordReader::Attachments(const RecordView& record) {
    return m_attachments.Load(record.type->id, record.dbid);
}

void RecordReader::ReadContent(const Attachment& attachment,
                               const std::function<void(std::span<const std::byte>)>& take) {
    m_contents.Read(attachment.sha256, take);
}

std::string RecordReader::HashContent(const Attachment& attachment) {
    ContentHash hash;
    ReadContent(attachment, [&hash](std::span<const std::byte> piece) { hash.Update(piece); });
    return hash.HexDigest();
}

std::optional<LinkedRecord> RecordReader::Original(const RecordView& record) {
    const auto original = m_duplicates.OriginalOf(record.type->id, record.dbid);
    if (!original) {
        return std::nullopt;
    }
    return LinkedRecord{.dbid = *original, .key = Key(*record.type, *original)};
}

std::vector<LinkedRecord> RecordReader::Duplicates(const RecordView& record) {
    std::vector<LinkedRecord> duplicates;
    for (const std::int64_t dbid : m_duplicates.DuplicatesOf(record.type->id, record.dbid)) {
        duplicates.push_back({.dbid = dbid, .key = Key(*record.type, dbid)});
    }
    return duplicates;
}

}  // namespace recorddb
