#include "recorddb/store/record_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "recorddb/store/bind_value.h"
#include "recorddb/store/tables/next_number.h"
#include "recorddb/store/tables/table_layout.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using sql::Quoted;

// Statements kept for different sets of changed columns. Past that many, all columns are written.
constexpr std::size_t kMostUpdates = 64;

// The dbids that are read at once where all machines have to be asked for them.
constexpr std::size_t kPageSize = 1000;

FieldValue ReadColumn(const sql::Statement& row, int column, schema::FieldKind kind) {
    if (row.IsNull(column)) {
        return {};
    }
    if (kind == schema::FieldKind::Integer || kind == schema::FieldKind::Reference) {
        return row.Int(column);
    }
    return std::string(row.Text(column));
}

}  // namespace

RecordTable::RecordTable(WriteBatch& batch, const schema::RecordType& type)
    : m_batch(batch),
      m_connection(batch.GetConnection()),
      m_type(type),
      m_uniqueSets(UniqueSetsOf(type)),
      m_twins(m_uniqueSets.size()) {
    for (const schema::Field& field : type.fields) {
        if (schema::HasColumn(field.kind) && field.kind != schema::FieldKind::DbId) {
            m_columns.push_back(field.index);
        }
    }
}

std::string RecordTable::ColumnList() const {
    std::string list;
    for (const std::size_t field : m_columns) {
        list += ", " + Quoted(m_type.fields[field].name);
    }
    return list;
}

void RecordTable::Insert(std::int64_t dbid, const RecordBuffer& record) {
    if (m_insert == nullptr) {
        std::string parameters;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            parameters += fmt::format(", ${}", i + 2);
        }
        m_insert = &m_connection.Prepare(
            fmt::format("INSERT INTO {} ({}, {}{}) VALUES ($1, 1{})", Quoted(m_type.name),
                        schema::kDbIdName, schema::kVersionColumn, ColumnList(), parameters));
    }
    m_insert->BindInt(1, dbid);
    int parameter = 1;
    for (const std::size_t field : m_columns) {
        ++parameter;
        if (const FieldValue& value = record.Get(field); HasValue(value)) {
            BindValue(*m_insert, parameter, value);
        }
    }
    m_insert->Execute();
    m_batch.Keys().Add(m_type, dbid, record);
    m_batch.Numbers().Note(m_type, dbid);
    m_page = {};
}

void RecordTable::Remove(std::int64_t dbid) {
    sql::Statement& remove = m_connection.Prepare(
        fmt::format("DELETE FROM {} WHERE {} = $1", Quoted(m_type.name), schema::kDbIdName));
    remove.BindInt(1, dbid);
    remove.Execute();
}

sql::Statement& RecordTable::UpdateStatement(const std::vector<bool>& changed) {
    if (const auto found = m_updates.find(changed); found != m_updates.end()) {
        return *found->second;
    }
    std::string assignments;
    int parameter = 2;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (changed[i]) {
            assignments +=
                fmt::format(", {} = ${}", Quoted(m_type.fields[m_columns[i]].name), ++parameter);
        }
    }
    sql::Statement& update = m_connection.Prepare(
        fmt::format("UPDATE {0} SET {1} = {1} + 1{2} WHERE {3} = $1 AND {1} = $2",
                    Quoted(m_type.name), schema::kVersionColumn, assignments, schema::kDbIdName));
    m_updates.emplace(changed, &update);
    return update;
}

bool RecordTable::Update(std::int64_t dbid, std::int64_t version, const RecordBuffer& record) {
    std::vector<bool> changed(m_columns.size());
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        changed[i] = record.IsChanged(m_columns[i]);
    }
    const bool anyChanged = std::find(changed.begin(), changed.end(), true) != changed.end();
    // A record of which a column was changed has been loaded, so all of them can be written.
    if (anyChanged && m_updates.size() >= kMostUpdates && !m_updates.contains(changed)) {
        changed.assign(m_columns.size(), true);
    }
    NextNumber(version, schema::kVersionColumn);
    sql::Statement& update = UpdateStatement(changed);
    update.BindInt(1, dbid);
    update.BindInt(2, version);
    int parameter = 2;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (changed[i]) {
            BindValue(update, ++parameter, record.Get(m_columns[i]));
        }
    }
    if (update.Execute() != 1) {
        return false;
    }
    m_batch.Keys().Change(m_type, dbid, record);
    return true;
}

std::optional<std::int64_t> RecordTable::Version(std::int64_t dbid) {
    if (const auto known = m_batch.KnownVersion(m_type, dbid)) {
        return known;
    }
    m_batch.NoteRead(m_type, dbid);
    if (const auto answer = m_batch.Answers().FindVersion(m_type, dbid)) {
        return answer;
    }
    if (m_version == nullptr) {
        m_version = &m_connection.Prepare(fmt::format("SELECT {} FROM {} WHERE {} = $1",
                                                      schema::kVersionColumn, Quoted(m_type.name),
                                                      schema::kDbIdName));
    }
    m_version->BindInt(1, dbid);
    const auto version = sql::QueryInt(*m_version);
    if (version) {
        m_batch.NoteVersion(m_type, dbid, *version);
    } else {
        // By the time this work is taken over, a new record may have this dbid.
        m_batch.NoteUnclearRead();
    }
    return version;
}

std::optional<std::int64_t> RecordTable::Load(std::int64_t dbid, RecordBuffer& record) {
    if (const PendingRecord* const pending = m_batch.Pending().FindColumns(m_type, dbid)) {
        for (const std::size_t field : m_columns) {
            record.SetSaved(field, pending->values[field]);
        }
        return m_batch.KnownVersion(m_type, dbid);
    }
    m_batch.NoteRead(m_type, dbid);
    if (const KnownRow* const row = m_batch.Answers().FindRow(m_type, dbid)) {
        for (const std::size_t field : m_columns) {
            record.SetSaved(field, (*row)[field]);
        }
        return Version(dbid);
    }
    if (m_load == nullptr) {
        m_load = &m_connection.Prepare(fmt::format("SELECT {}{} FROM {} WHERE {} = $1",
                                                   schema::kVersionColumn, ColumnList(),
                                                   Quoted(m_type.name), schema::kDbIdName));
    }
    const sql::ResetGuard guard(*m_load);
    m_load->BindInt(1, dbid);
    if (!m_load->Step()) {
        m_batch.NoteUnclearRead();
        return std::nullopt;
    }
    int column = 0;
    for (const std::size_t field : m_columns) {
        record.SetSaved(field, ReadColumn(*m_load, ++column, m_type.fields[field].kind));
    }
    const std::int64_t version = m_load->Int(0);
    if (const auto known = m_batch.KnownVersion(m_type, dbid)) {
        return known;
    }
    m_batch.NoteVersion(m_type, dbid, version);
    return version;
}

std::optional<std::int64_t> RecordTable::NextAfter(std::int64_t dbid) {
    m_batch.Apply(WriteBatch::For::Reading);
    m_batch.NoteUnclearRead();
    if (IsSpread(m_batch.GetLayout(), m_type)) {
        return NextOfPage(dbid);
    }
    if (m_next == nullptr) {
        m_next = &m_connection.Prepare(fmt::format("SELECT min({0}) FROM {1} WHERE {0} > $1",
                                                   schema::kDbIdName, Quoted(m_type.name)));
    }
    m_next->BindInt(1, dbid);
    return sql::QueryInt(*m_next);
}

std::optional<std::int64_t> RecordTable::NextOfPage(std::int64_t dbid) {
    const bool isGood = m_connection.InTransaction() &&
                        m_page.transactionCount == m_connection.TransactionCount() &&
                        m_page.undoCount == m_batch.UndoCount() &&
                        m_page.changeCount == m_batch.ChangeCount() && dbid >= m_page.after;
    auto next = std::upper_bound(m_page.dbids.begin(), m_page.dbids.end(), dbid);
    if (!isGood || (next == m_page.dbids.end() && !m_page.isLast)) {
        if (m_next == nullptr) {
            m_next = &m_connection.Prepare(
                fmt::format("SELECT {0} FROM {1} WHERE {0} > $1 ORDER BY {0} LIMIT {2}",
                            schema::kDbIdName, Quoted(m_type.name), kPageSize));
        }
        m_page = {.transactionCount = m_connection.TransactionCount(),
                  .undoCount = m_batch.UndoCount(),
                  .changeCount = m_batch.ChangeCount(),
                  .after = dbid,
                  .dbids = {},
                  .isLast = false};
        const sql::ResetGuard guard(*m_next);
        m_next->BindInt(1, dbid);
        while (m_next->Step()) {
            m_page.dbids.push_back(m_next->Int(0));
        }
        m_page.isLast = m_page.dbids.size() < kPageSize;
        next = m_page.dbids.begin();
    }
    return next == m_page.dbids.end() ? std::nullopt : std::optional(*next);
}

sql::Statement& RecordTable::TwinStatement(std::size_t set) {
    sql::Statement*& statement = m_twins[set];
    if (statement == nullptr) {
        std::string conditions;
        int parameter = 1;
        for (const std::size_t field : m_uniqueSets[set]) {
            conditions +=
                fmt::format("{} = ${} AND ", Quoted(m_type.fields[field].name), ++parameter);
        }
        statement =
            &m_connection.Prepare(fmt::format("SELECT {0} FROM {1} WHERE {2}{0} <> $1",
                                              schema::kDbIdName, Quoted(m_type.name), conditions));
    }
    return *statement;
}

std::optional<std::int64_t> RecordTable::FindTwin(std::size_t set, const RecordBuffer& record,
                                                  std::int64_t dbid) {
    std::vector<const FieldValue*> values;
    for (const std::size_t field : m_uniqueSets[set]) {
        values.push_back(&record.Get(field));
    }
    const std::int64_t pending = m_batch.FindKey(m_type, m_uniqueSets[set], values);
    if (pending != 0 && pending != dbid) {
        return pending;
    }
    m_batch.NoteSearch(m_type, m_uniqueSets[set], values, false);
    const auto answer = m_batch.Answers().Find(m_type, m_uniqueSets[set], values);
    if (answer && *answer != dbid) {
        return *answer != 0 ? answer : std::nullopt;
    }
    if (answer) {
        return std::nullopt;
    }
    if (const auto found = m_batch.Keys().Find(m_type, m_uniqueSets[set], values)) {
        return found->dbid != 0 && found->dbid != dbid ? std::optional(found->dbid) : std::nullopt;
    }
    sql::Statement& find = TwinStatement(set);
    find.BindInt(1, dbid);
    int parameter = 1;
    for (const FieldValue* const value : values) {
        BindValue(find, ++parameter, *value);
    }
    return sql::QueryInt(find);
}

}  // namespace recorddb
