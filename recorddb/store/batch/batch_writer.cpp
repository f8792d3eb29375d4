#include "recorddb/store/batch/batch_writer.h"

#include <algorithm>
#include <array>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include "recorddb/model/names.h"
#include "recorddb/sql/row_writer.h"
#include "recorddb/store/batch/key_row.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/reference_list.h"
#include "recorddb/store/tables/cells.h"
#include "recorddb/store/tables/table_layout.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;
using sql::Cell;
using sql::CellType;
using sql::RowColumn;
using Kind = sql::RowChange::Kind;

// The most statements for different sets of changed columns: in one batch, where each is a call of
// the engine, and in all, since each is kept prepared. Past that, all columns are written, changed
// or not.
constexpr std::size_t kMostShapesInBatch = 8;
constexpr std::size_t kMostShapes = 64;

Cell CellOrNull(std::string_view text) {
    return text.empty() ? Cell() : Cell(text);
}

// The columns of a type that are written for records of which `changed` differ.
std::vector<bool> AllColumns(const RecordType& type) {
    std::vector<bool> columns(type.fields.size());
    std::transform(type.fields.begin(), type.fields.end(), columns.begin(), IsPlainColumn);
    return columns;
}

}  // namespace

// One call of Write. It keeps what the engine borrows.
class BatchWriter::Pass {
  public:
    explicit Pass(BatchWriter& writer)
        : m_schema(writer.m_schema),
          m_layout(writer.m_layout),
          m_shapes(writer.m_shapes),
          m_rows(writer.m_connection.MakeRowWriter()) {}

    void Write(const PendingChanges& changes) {
        WriteNewRecords(changes);
        WriteKeys(changes);
        RaiseLastDbIds(changes);
        for (const RecordType& type : m_schema.Types()) {
            const auto& records = changes.Of(type.id).All();
            if (!records.empty()) {
                WriteUpdates(type, records);
                WriteLists(type, records);
            }
        }
        WriteHistory(changes.histories);
        WriteExpiry(changes.histories);
        WriteLinks(changes.links);
        m_rows->Finish();
    }

  private:
    // What one change of rows refers to.
    struct Change {
        std::string table;
        std::vector<RowColumn> columns;
        std::vector<Cell> cells;
    };

    Change& NewChange(std::string_view table) {
        Change& change = m_changes.emplace_back();
        change.table = table;
        return change;
    }

    void Send(Kind kind, const Change& change, std::size_t keys) {
        if (!change.cells.empty()) {
            m_rows->Write({kind, change.table, change.columns, keys, change.cells});
        }
    }

    void WriteNewRecords(const PendingChanges& changes) {
        int lastWave = 0;
        for (int wave = 0; wave <= lastWave; ++wave) {
            for (const RecordType& type : m_schema.Types()) {
                const PendingRecords& records = changes.Of(type.id);
                if (!records.HasNew()) {
                    continue;
                }
                for (const PendingRecord& record : records.All()) {
                    lastWave = std::max(lastWave, record.wave);
                }
                InsertRecords(type, records.All(), wave);
            }
        }
    }

    void InsertRecords(const RecordType& type, const std::vector<PendingRecord>& records,
                       int wave) {
        Change& change = NewChange(type.name);
        change.columns = {{schema::kDbIdName, CellType::Integer},
                          {schema::kVersionColumn, CellType::Integer}};
        for (const Field& field : type.fields) {
            if (IsPlainColumn(field)) {
                change.columns.push_back(ColumnOf(field));
            }
        }
        change.cells.reserve(records.size() * change.columns.size());
        for (const PendingRecord& record : records) {
            if (!record.IsNew() || record.wave != wave) {
                continue;
            }
            change.cells.emplace_back(record.dbid);
            change.cells.emplace_back(record.version);
            for (const Field& field : type.fields) {
                if (IsPlainColumn(field)) {
                    change.cells.push_back(CellOf(record.values[field.index]));
                }
            }
        }
        Send(Kind::Insert, change, 0);
    }

    // Only new records: a change of a key is not gathered.
    void WriteKeys(const PendingChanges& changes) {
        Change& change = NewChange("zt_key");
        change.columns = {{"hash", CellType::Text},
                          {"record_type", CellType::Integer},
                          {"field", CellType::Text},
                          {"value", CellType::Text},
                          {"record", CellType::Integer}};
        for (const RecordType& type : m_schema.Types()) {
            if (!IsSpread(m_layout, type) || !changes.Of(type.id).HasNew()) {
                continue;
            }
            for (const FieldSet& set : UniqueSetsOf(type)) {
                AddKeys(type, set, changes.Of(type.id).All(), change);
            }
        }
        Send(Kind::Insert, change, 0);
    }

    void AddKeys(const RecordType& type, const FieldSet& set,
                 const std::vector<PendingRecord>& records, Change& change) {
        for (const PendingRecord& record : records) {
            if (!record.IsNew()) {
                continue;
            }
            std::vector<const FieldValue*> values;
            for (const std::size_t field : set) {
                values.push_back(&record.values[field]);
            }
            if (auto row = KeyRowOf(type, set, values)) {
                const KeyRow& kept = m_keyRows.emplace_back(*std::move(row));
                change.cells.insert(
                    change.cells.end(),
                    {std::string_view(kept.hash), type.id, std::string_view(kept.field),
                     std::string_view(kept.value), record.dbid});
            }
        }
    }

    void RaiseLastDbIds(const PendingChanges& changes) {
        Change& change = NewChange("zt_last_dbid");
        change.columns = {{"record_type", CellType::Integer},
                          {schema::kDbIdName, CellType::Integer}};
        for (const RecordType& type : m_schema.Types()) {
            if (m_layout == Layout::Sharded && changes.Of(type.id).HasNew()) {
                change.cells.insert(change.cells.end(),
                                    {type.id, changes.Of(type.id).HighestNew()});
            }
        }
        Send(Kind::Raise, change, 1);
    }

    // By the columns that are written.
    using Shapes = std::map<std::vector<bool>, std::vector<const PendingRecord*>>;

    void WriteUpdates(const RecordType& type, const std::vector<PendingRecord>& records) {
        Shapes shapes;
        for (const PendingRecord& record : records) {
            if (!record.IsNew()) {
                shapes[ShapeOf(type, record, shapes)].push_back(&record);
            }
        }
        for (const auto& [columns, ofShape] : shapes) {
            UpdateRecords(type, columns, ofShape);
        }
    }

    std::vector<bool> ShapeOf(const RecordType& type, const PendingRecord& record,
                              const Shapes& inBatch) {
        const std::vector<bool>& changed = record.changed;
        auto& known = m_shapes[static_cast<std::size_t>(type.id - 1)];
        const bool none = std::find(changed.begin(), changed.end(), true) == changed.end();
        if (none || inBatch.contains(changed)) {
            return changed;
        }
        const bool isKnown = known.contains(changed);
        if (inBatch.size() >= kMostShapesInBatch || (!isKnown && known.size() >= kMostShapes)) {
            return AllColumns(type);
        }
        known.insert(changed);
        return changed;
    }

    void UpdateRecords(const RecordType& type, const std::vector<bool>& columns,
                       const std::vector<const PendingRecord*>& records) {
        Change& change = NewChange(type.name);
        change.columns = {{schema::kDbIdName, CellType::Integer},
                          {schema::kVersionColumn, CellType::Integer},
                          {schema::kVersionColumn, CellType::Integer}};
        for (std::size_t field = 0; field < columns.size(); ++field) {
            if (columns[field]) {
                change.columns.push_back(ColumnOf(type.fields[field]));
            }
        }
        change.cells.reserve(records.size() * change.columns.size());
        for (const PendingRecord* const record : records) {
            change.cells.emplace_back(record->dbid);
            change.cells.emplace_back(record->baseVersion);
            change.cells.emplace_back(record->version);
            for (std::size_t field = 0; field < columns.size(); ++field) {
                if (columns[field]) {
                    change.cells.push_back(CellOf(record->values[field]));
                }
            }
        }
        Send(Kind::Update, change, 2);
    }

    void WriteLists(const RecordType& type, const std::vector<PendingRecord>& records) {
        for (const Field& field : type.fields) {
            if (field.kind == FieldKind::ReferenceList) {
                WriteList(type, field, records);
            }
        }
    }

    // What the list beneath and the new one begin with stays as it is.
    void WriteList(const RecordType& type, const Field& field,
                   const std::vector<PendingRecord>& records) {
        const std::string table = schema::ListTableName(type, field);
        Change& removed = NewChange(table);
        removed.columns = {{"record", CellType::Integer}, {"position", CellType::Integer}};
        Change& added = NewChange(table);
        added.columns = removed.columns;
        added.columns.push_back({"target", CellType::Integer});
        for (const PendingRecord& record : records) {
            if (!record.IsNew() && !record.HasList(field.index)) {
                continue;
            }
            const ReferenceList& before = ListIn(record.ListBeneath(field.index));
            const ReferenceList& after = ListIn(record.values[field.index]);
            const std::size_t same = CommonLength(before, after);
            for (std::size_t i = same; i < before.size(); ++i) {
                removed.cells.insert(removed.cells.end(),
                                     {record.dbid, static_cast<std::int64_t>(i)});
            }
            for (std::size_t i = same; i < after.size(); ++i) {
                added.cells.insert(added.cells.end(),
                                   {record.dbid, static_cast<std::int64_t>(i), after[i]});
            }
        }
        Send(Kind::Delete, removed, 2);
        Send(Kind::Insert, added, 0);
    }

    void WriteHistory(const std::map<RecordKey, PendingHistory>& histories) {
        Change& change = NewChange("zt_history");
        change.columns = {{"record_type", CellType::Integer}, {"record", CellType::Integer},
                          {"entry", CellType::Integer},       {"field", CellType::Text},
                          {"action_time", CellType::Text},    {"expiry_time", CellType::Text},
                          {"user_name", CellType::Text},      {"action_name", CellType::Text},
                          {"old_state", CellType::Text},      {"new_state", CellType::Text},
                          {"comments", CellType::Text}};
        const auto text = [](const std::string& value) { return Cell(std::string_view(value)); };
        for (const auto& [key, history] : histories) {
            for (const HistoryEntry& entry : history.added) {
                change.cells.insert(
                    change.cells.end(),
                    {key.first, key.second, entry.entry, history.field, text(entry.actionTime),
                     CellOrNull(entry.expiryTime), text(entry.userName), text(entry.actionName),
                     text(entry.oldState), text(entry.newState), text(entry.comments)});
            }
        }
        Send(Kind::Insert, change, 0);
    }

    void WriteExpiry(const std::map<RecordKey, PendingHistory>& histories) {
        Change& change = NewChange("zt_history");
        change.columns = {{"record_type", CellType::Integer},
                          {"record", CellType::Integer},
                          {"entry", CellType::Integer},
                          {"expiry_time", CellType::Text}};
        for (const auto& [key, history] : histories) {
            for (const auto& [entry, time] : history.expiry) {
                change.cells.insert(change.cells.end(),
                                    {key.first, key.second, entry, CellOrNull(time)});
            }
        }
        Send(Kind::Update, change, 3);
    }

    void WriteLinks(const std::map<RecordKey, PendingLink>& links) {
        Change& change = NewChange("zt_duplicate");
        change.columns = {{"record_type", CellType::Integer},
                          {"duplicate", CellType::Integer},
                          {"original", CellType::Integer},
                          {"action_time", CellType::Text}};
        for (const auto& [key, link] : links) {
            change.cells.insert(change.cells.end(), {key.first, key.second, link.original,
                                                     std::string_view(link.time)});
        }
        Send(Kind::InsertOrUpdate, change, 2);
    }

    const schema::Schema& m_schema;
    Layout m_layout;
    std::vector<std::set<std::vector<bool>>>& m_shapes;
    std::list<KeyRow> m_keyRows;  // of which the changes borrow
    std::list<Change> m_changes;
    std::unique_ptr<sql::RowWriter> m_rows;  // borrows of the changes
};

void BatchWriter::Write(const PendingChanges& changes) {
    Pass(*this).Write(changes);
}

}  // namespace recorddb
