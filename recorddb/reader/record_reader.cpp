#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "recorddb/database.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/reader.h"
#include "recorddb/sha256.h"
#include "recorddb/sql.h"
#include "recorddb/store/attachment_table.h"
#include "recorddb/store/batch/database_batch.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/look_ahead.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/bind_value.h"
#include "recorddb/store/content_store.h"
#include "recorddb/store/duplicate_table.h"
#include "recorddb/store/history_table.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"
#include "recorddb/value_text.h"

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

std::vector<std::int64_t> FindStored(WriteBatch& batch, const schema::RecordType& type,
                                     const schema::Field& field, const FieldValue& wanted,
                                     std::size_t limit) {
    const auto place = batch.Keys().Find(type, {field.index}, {&wanted});
    if (place && (place->dbid == 0 || place->isCertain)) {
        return place->dbid == 0 ? std::vector<std::int64_t>() : std::vector{place->dbid};
    }
    sql::Statement& find = batch.GetConnection().Prepare(
        fmt::format("SELECT {0} FROM {1} WHERE {2} = $1{3} ORDER BY {0} LIMIT $2",
                    schema::kDbIdName, sql::Quoted(type.name), sql::Quoted(field.name),
                    place ? fmt::format(" AND {} = $3", schema::kDbIdName) : ""));
    const sql::ResetGuard guard(find);
    BindValue(find, 1, wanted);
    find.Bind(2, limit);
    if (place) {
        find.Bind(3, place->dbid);
    }
    std::vector<std::int64_t> dbids;
    while (find.Step()) {
        dbids.push_back(find.Int(0));
    }
    return dbids;
}

// What is gathered has no changes of fields that are unique, besides new records.
std::vector<std::int64_t> FindWanted(WriteBatch& batch, const schema::RecordType& type,
                                     const schema::Field& field, const FieldValue& wanted,
                                     std::size_t limit) {
    const FieldSet fields = {field.index};
    const std::vector<FieldSet> unique = UniqueSetsOf(type);
    if (std::find(unique.begin(), unique.end(), fields) == unique.end()) {
        batch.Apply(WriteBatch::For::Reading);
    } else if (const std::int64_t pending = batch.FindKey(type, fields, {&wanted})) {
        return {pending};
    }
    std::vector<std::int64_t> stored = FindStored(batch, type, field, wanted, limit);
    batch.NoteSearch(type, fields, {&wanted}, !stored.empty());
    return stored;
}

}  // namespace

struct RecordReader::Tables {
    explicit Tables(Database& database)
        : batch(DatabaseBatch::Of(database)),
          connection(database.GetConnection()),
          records(batch, database.GetSchema()),
          keyTable(batch, database.GetSchema()),
          keys(batch, database.GetSchema(), keyTable),
          history(batch),
          attachments(batch),
          contents(connection),
          duplicates(batch) {}

    // The connection, when all that was gathered is in the database.
    sql::Connection& UpToDate() {
        batch.Apply(WriteBatch::For::Reading);
        return connection;
    }

    void ForgetAhead() noexcept {
        if (std::exchange(hasLookedAhead, false)) {
            batch.Answers().Forget();
        }
    }

    bool hasLookedAhead = false;
    WriteBatch& batch;
    sql::Connection& connection;
    RecordTables records;
    KeyTable keyTable;
    ReferenceKeys keys;
    HistoryTable history;
    AttachmentTable attachments;
    ContentStore contents;
    DuplicateTable duplicates;
};

RecordReader::RecordReader(Database& database) : m_tables(std::make_unique<Tables>(database)) {}

RecordReader::~RecordReader() {
    m_tables->ForgetAhead();
}

void RecordReader::LookAhead(std::span<const ExpectedSearch> searches) {
    m_tables->ForgetAhead();
    sql::Connection& connection = m_tables->UpToDate();
    if (connection.ReadsManyForLess()) {
        WriteBatch& batch = m_tables->batch;
        m_tables->hasLookedAhead = true;
        recorddb::LookAhead(connection, batch.GetSchema(), batch.GetLayout(), batch.Answers())
            .Read(searches);
    }
}

std::int64_t RecordReader::Count(const schema::RecordType& type) {
    sql::Statement& count = m_tables->UpToDate().Prepare(
        fmt::format("SELECT count(*) FROM {}", sql::Quoted(type.name)));
    return sql::QueryInt(count).value_or(0);
}

std::optional<RecordView> RecordReader::Next(const schema::RecordType& type, std::int64_t after) {
    const auto dbid = NextDbId(type, after);
    return dbid ? Get(type, *dbid) : std::nullopt;
}

std::optional<std::int64_t> RecordReader::NextDbId(const schema::RecordType& type,
                                                   std::int64_t after) {
    return m_tables->records.Records(type).NextAfter(after);
}

std::optional<RecordView> RecordReader::Get(const schema::RecordType& type, std::int64_t dbid) {
    RecordBuffer buffer(type.fields.size());
    const auto version = m_tables->records.Records(type).Load(dbid, buffer);
    if (!version) {
        return std::nullopt;
    }
    RecordView view{.type = &type, .dbid = dbid, .version = *version, .values = {}, .targets = {}};
    for (const schema::Field& field : type.fields) {
        if (field.kind == schema::FieldKind::DbId) {
            buffer.SetSaved(field.index, dbid);
        } else if (field.kind == schema::FieldKind::ReferenceList) {
            buffer.SetSaved(field.index, m_tables->records.List(type, field).Load(dbid));
        }
        const FieldValue& value = buffer.Get(field.index);
        view.values.push_back(m_tables->keyTable.TextsOf(field, value));
        view.targets.push_back(TargetsOf(field, value));
    }
    return view;
}

std::optional<RecordView> RecordReader::Find(const schema::RecordType& type,
                                             std::string_view identifier) {
    const KeyMatch match = m_tables->keys.Find(type, identifier);
    if (match.dbid != 0) {
        return Get(type, match.dbid);
    }
    const auto dbid = IntegerOf(identifier);
    return dbid ? Get(type, *dbid) : std::nullopt;
}

std::vector<std::int64_t> RecordReader::FindByValue(const schema::RecordType& type,
                                                    const schema::Field& field,
                                                    std::string_view value, std::size_t limit) {
    const bool isNumber = field.kind == schema::FieldKind::Integer ||
                          field.kind == schema::FieldKind::Reference ||
                          field.kind == schema::FieldKind::DbId;
    if (!isNumber) {
        return FindWanted(m_tables->batch, type, field, std::string(value), limit);
    }
    const auto number = IntegerOf(value);
    return number ? FindWanted(m_tables->batch, type, field, *number, limit)
                  : std::vector<std::int64_t>();
}

KeyMatch RecordReader::FindKey(const schema::RecordType& type, std::string_view key,
                               const KeySearchLimits& limits) {
    return m_tables->keys.Find(type, key, limits);
}

void RecordReader::ReadValues(const schema::RecordType& type, const schema::Field& field,
                              const std::function<void(std::int64_t, std::string_view)>& take) {
    const auto read = m_tables->UpToDate().PrepareScan(
        fmt::format("SELECT {0}, {1} FROM {2} WHERE {0} IS NOT NULL", sql::Quoted(field.name),
                    schema::kDbIdName, sql::Quoted(type.name)));
    while (read->Step()) {
        take(read->Int(1), read->Text(0));
    }
}

std::string RecordReader::Key(const schema::RecordType& type, std::int64_t dbid) {
    return m_tables->keyTable.KeyOf(type, dbid).value_or("");
}

std::vector<HistoryEntry> RecordReader::History(const RecordView& record) {
    return m_tables->history.Load(record.type->id, record.dbid);
}

std::vector<Attachment> RecordReader::Attachments(const RecordView& record) {
    const KnownAnswers& answers = m_tables->batch.Answers();
    if (const auto* const answer = answers.FindAttachments({record.type->id, record.dbid})) {
        return *answer;
    }
    return m_tables->attachments.Load(record.type->id, record.dbid);
}

void RecordReader::ReadContent(const Attachment& attachment,
                               const std::function<void(std::span<const std::byte>)>& take) {
    m_tables->contents.Read(attachment.sha256, take);
}

std::string RecordReader::HashContent(const Attachment& attachment) {
    Sha256 hash;
    ReadContent(attachment, [&hash](std::span<const std::byte> piece) { hash.Update(piece); });
    return hash.HexDigest();
}

std::optional<LinkedRecord> RecordReader::Original(const RecordView& record) {
    const auto original = m_tables->duplicates.OriginalOf(record.type->id, record.dbid);
    if (!original) {
        return std::nullopt;
    }
    return LinkedRecord{.dbid = *original, .key = Key(*record.type, *original)};
}

std::vector<LinkedRecord> RecordReader::Duplicates(const RecordView& record) {
    std::vector<LinkedRecord> duplicates;
    for (const std::int64_t dbid :
         m_tables->duplicates.DuplicatesOf(record.type->id, record.dbid)) {
        duplicates.push_back({.dbid = dbid, .key = Key(*record.type, dbid)});
    }
    return duplicates;
}

}  // namespace recorddb
