#include "recorddb/editing/result_set.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/messages/message_ids.h"
#include "recorddb/editing/reference_refusal.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/store/bind_value.h"
#include "recorddb/store/tables/column_text.h"
#include "recorddb/store/tables/table_layout.h"
#include "recorddb/value_text.h"

namespace recorddb {

void ResultSet::Prepare() {
    m_parts->failures.Guard([this] {
        for (const FilterNode& filter : m_query->Filters()) {
            m_parts->searchIndexes.Ensure(m_query->Type(), filter.Field());
        }
        // Where a type is spread, which statement it is depends on the values.
        if (!IsSpread(m_parts->batch.GetLayout(), m_query->Type())) {
            m_parts->statements.For(*m_query, QueryStatements::Place::Unknown);
        }
    });
}

void ResultSet::Execute() {
    m_cells.clear();
    m_rowCount = 0;
    m_fetched = 0;
    m_onRow = false;
    m_dbids.clear();
    m_parts->failures.Guard([this] {
        if (ReadOperands()) {
            ApplyChangesOfColumns();
            if (!TakeKnownAnswer()) {
                ReadRows();
            }
            NoteReads();
            AddNewRecords();
        }
    });
    m_parts->failures.Guard([this] { ResolveReferences(); });
}

// False when no record can have one of the values.
bool ResultSet::ReadOperands() {
    m_operands.clear();
    for (const FilterNode& filter : m_query->Filters()) {
        auto operand = filter.Value().empty() ? FieldValue() : Operand(filter);
        if (!operand) {
            return false;
        }
        m_operands.push_back(*std::move(operand));
    }
    return true;
}

// New records can be added to the database's answer, but changed ones cannot be corrected in it:
// their changes are written first.
void ResultSet::ApplyChangesOfColumns() {
    WriteBatch& batch = m_parts->batch;
    const auto changes = [&](const schema::Field* field) {
        return field != nullptr && batch.Pending().ChangesColumn(m_query->Type(), field->index);
    };
    const auto& columns = m_query->Columns();
    const auto& filters = m_query->Filters();
    if (std::any_of(columns.begin(), columns.end(), changes) ||
        std::any_of(filters.begin(), filters.end(),
                    [&](const FilterNode& filter) { return changes(&filter.Field()); })) {
        batch.Apply(WriteBatch::For::Reading);
    }
}

// The value as the column holds it; nothing when it cannot hold it.
std::optional<FieldValue> ResultSet::Operand(const FilterNode& filter) {
    const schema::Field& field = filter.Field();
    switch (field.kind) {
        case schema::FieldKind::Integer:
        case schema::FieldKind::DbId:
            return IntegerOf(filter.Value());
        case schema::FieldKind::DateTime:
            return DateTimeOf(filter.Value());
        case schema::FieldKind::Reference: {
            const schema::RecordType& target = m_parts->schema.Type(field.target);
            const KeyMatch match = m_parts->keys.Find(target, filter.Value());
            if (match.several || match.undecided) {
                ThrowMessage(ReferenceRefusal(m_query->Type(), field, target, filter.Value(), match,
                                              m_parts->keys.Limits()));
            }
            return match.dbid != 0 ? std::optional<FieldValue>(match.dbid) : std::nullopt;
        }
        default:
            return filter.Value();
    }
}

std::size_t ResultSet::Width() const {
    return std::max<std::size_t>(m_query->Columns().size(), 1);
}

// False when the database has to be asked.
bool ResultSet::TakeKnownAnswer() {
    const KnownAnswers& answers = m_parts->batch.Answers();
    if (answers.IsEmpty()) {
        return false;
    }
    const schema::RecordType& type = m_query->Type();
    FieldSet fields;
    std::vector<const FieldValue*> values;
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        fields.push_back(m_query->Filters()[i].Field().index);
        values.push_back(&m_operands[i]);
    }
    const auto dbid = answers.Find(type, fields, values);
    if (!dbid || *dbid == 0) {
        return dbid.has_value();
    }
    const KnownRow* const row = answers.FindRow(type, *dbid);
    std::vector<std::string> cells;
    for (const schema::Field* const column : m_query->Columns()) {
        const bool isDbId = column != nullptr && column->kind == schema::FieldKind::DbId;
        if (column != nullptr && !isDbId && row == nullptr) {
            return false;
        }
        cells.push_back(column == nullptr ? ""
                        : isDbId          ? std::to_string(*dbid)
                                          : ColumnText((*row)[column->index]));
    }
    cells.resize(Width());
    m_cells = std::move(cells);
    m_dbids = {*dbid};
    m_rowCount = 1;
    return true;
}

// Where the only record stands that can match, if that is known.
std::optional<KeyRows::Location> ResultSet::Place() const {
    FieldSet fields;
    std::vector<const FieldValue*> values;
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        if (HasValue(m_operands[i])) {
            fields.push_back(m_query->Filters()[i].Field().index);
            values.push_back(&m_operands[i]);
        }
    }
    return m_parts->batch.Keys().Find(m_query->Type(), fields, values);
}

void ResultSet::ReadRows() {
    const auto place = Place();
    if (place && place->dbid == 0) {
        return;
    }
    sql::Statement& statement = m_parts->statements.For(
        *m_query, place ? QueryStatements::Place::Known : QueryStatements::Place::Unknown);
    const sql::ResetGuard guard(statement);
    int parameter = 0;
    for (const FieldValue& operand : m_operands) {
        if (HasValue(operand)) {
            BindValue(statement, ++parameter, operand);
        }
    }
    if (place) {
        statement.BindInt(++parameter, place->dbid);
    }
    statement.BindInt(++parameter,
                      m_limit > 0 ? m_limit : std::numeric_limits<std::int64_t>::max());
    const auto width = static_cast<int>(Width());
    while (statement.Step()) {
        for (int column = 0; column < width; ++column) {
            m_cells.emplace_back(statement.Text(column));
        }
        m_dbids.push_back(statement.Int(width));
    }
    m_rowCount = m_dbids.size();
}

void ResultSet::NoteReads() {
    WriteBatch& batch = m_parts->batch;
    if (!batch.IsAhead()) {
        return;
    }
    FieldSet fields;
    std::vector<const FieldValue*> values;
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        fields.push_back(m_query->Filters()[i].Field().index);
        values.push_back(&m_operands[i]);
    }
    batch.NoteSearch(m_query->Type(), fields, values, !m_dbids.empty());
    for (const std::int64_t dbid : m_dbids) {
        batch.NoteRead(m_query->Type(), dbid);
    }
}

// Puts the records that the batch has gathered where they belong, by dbid.
void ResultSet::AddNewRecords() {
    const schema::RecordType& type = m_query->Type();
    if (m_parts->batch.Pending().HighestNew(type) == 0) {
        return;
    }
    std::vector<PendingLayers::Condition> conditions;
    for (std::size_t i = 0; i < m_operands.size(); ++i) {
        conditions.push_back({m_query->Filters()[i].Field().index, m_operands[i]});
    }
    const std::size_t width = Width();
    for (const PendingRecord* const record : m_parts->batch.Pending().NewWith(type, conditions)) {
        const auto place = std::upper_bound(m_dbids.begin(), m_dbids.end(), record->dbid);
        const auto row = static_cast<std::size_t>(place - m_dbids.begin());
        std::vector<std::string> cells(width);
        for (std::size_t column = 0; column < m_query->Columns().size(); ++column) {
            const schema::Field* const field = m_query->Columns()[column];
            cells[column] = field != nullptr ? ColumnText(record->values[field->index]) : "";
        }
        m_cells.insert(m_cells.begin() + static_cast<std::ptrdiff_t>(row * width), cells.begin(),
                       cells.end());
        m_dbids.insert(place, record->dbid);
    }
    if (m_limit > 0 && m_dbids.size() > static_cast<std::size_t>(m_limit)) {
        m_dbids.resize(static_cast<std::size_t>(m_limit));
        m_cells.resize(m_dbids.size() * width);
    }
    m_rowCount = m_dbids.size();
}

// Shows references as keys. Done once all rows are read, since finding a key may use the statement
// that reads them.
void ResultSet::ResolveReferences() {
    const auto& columns = m_query->Columns();
    for (std::size_t cell = 0; cell < m_cells.size() && !columns.empty(); ++cell) {
        const schema::Field* const field = columns[cell % columns.size()];
        if (field == nullptr || field->kind != schema::FieldKind::Reference) {
            continue;
        }
        if (const auto target = IntegerOf(m_cells[cell])) {
            m_cells[cell] =
                m_parts->keyTable.KeyOf(m_parts->schema.Type(field->target), *target).value_or("");
        }
    }
}

void ResultSet::FetchNext(int& status) {
    m_onRow = m_fetched < m_rowCount;
    m_fetched += m_onRow ? 1 : 0;
    status = m_onRow ? 1 : 0;
}

void ResultSet::GetColumn(int column, Obx_String& value, int /*reserved*/) {
    const std::size_t columns = m_query->Columns().size();
    const auto position = static_cast<std::size_t>(column - 1);
    if (!m_onRow || column < 1 || position >= columns) {
        ThrowMessage(ErrorMessage(message_id::kNoColumn, {{u"_datatype_", m_query->Type().name},
                                                          {u"_value_", std::to_string(column)}}));
    }
    value = Obx_String::FromUtf8(m_cells[(m_fetched - 1) * columns + position]);
}

}  // namespace recorddb
