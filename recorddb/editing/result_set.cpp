#include "recorddb/editing/result_set.h"

#include "platform/messages/message_ids.h"
#include "recorddb/editing/reference_refusal.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/model/value_text.h"
#include "recorddb/store/bind_value.h"

namespace recorddb {

void ResultSet::Prepare() {
    m_parts->failures.Guard([this] {
        for (const FilterNode& filter : m_query->Filters()) {
            m_parts->searchIndexes.Ensure(m_query->Type(), filter.Field());
        }
        m_parts->statements.For(*m_query);
    });
}

void ResultSet::Execute() {
    m_cells.clear();
    m_rowCount = 0;
    m_fetched = 0;
    m_onRow = false;
    m_parts->failures.Guard([this] {
        sql::Statement& statement = m_parts->statements.For(*m_query);
        const sql::ResetGuard guard(statement);
        if (Bind(statement)) {
            ReadRows(statement);
        }
    });
    m_parts->failures.Guard([this] { ResolveReferences(); });
}

// False when no record can have one of the values.
bool ResultSet::Bind(sql::Statement& statement) {
    m_operands.clear();
    for (const FilterNode& filter : m_query->Filters()) {
        if (filter.Value().empty()) {
            continue;
        }
        auto operand = Operand(filter);
        if (!operand) {
            return false;
        }
        m_operands.push_back(*std::move(operand));
    }
    int parameter = 0;
    for (const FieldValue& operand : m_operands) {
        BindValue(statement, ++parameter, operand);
    }
    return true;
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

void ResultSet::ReadRows(sql::Statement& statement) {
    const auto limit = static_cast<std::size_t>(m_limit > 0 ? m_limit : 0);
    while ((limit == 0 || m_rowCount < limit) && statement.Step()) {
        ++m_rowCount;
        for (int column = 0; column < statement.ColumnCount(); ++column) {
            m_cells.emplace_back(statement.Text(column));
        }
    }
}

// Records referred to are told by their keys. Only when all rows are read, since finding a key may
// take the statement that reads them.
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
