#include "recorddb/store/list_table.h"

#include <fmt/format.h>

#include "recorddb/model/names.h"
#include "recorddb/store/batch/reference_list.h"

namespace recorddb {

FieldValue ListTable::Load(std::int64_t record) {
    if (const FieldValue* const pending =
            m_batch.Pending().FindList(m_type, m_field.index, record)) {
        return *pending;
    }
    m_batch.NoteRead(m_type, record);
    if (const FieldValue* const answer =
            m_batch.Answers().FindList(m_type, m_field.index, record)) {
        return *answer;
    }
    if (m_load == nullptr) {
        m_load = &m_connection.Prepare(
            fmt::format("SELECT target FROM {} WHERE record = $1 ORDER BY position",
                        sql::Quoted(schema::ListTableName(m_type, m_field))));
    }
    const sql::ResetGuard guard(*m_load);
    m_load->BindInt(1, record);
    ReferenceList list;
    while (m_load->Step()) {
        list.push_back(m_load->Int(0));
    }
    return list.empty() ? FieldValue() : FieldValue(std::move(list));
}

void ListTable::Save(std::int64_t record, const FieldValue& saved, const FieldValue& list) {
    if (m_add == nullptr) {
        const std::string table = sql::Quoted(schema::ListTableName(m_type, m_field));
        m_cut = &m_connection.Prepare(
            fmt::format("DELETE FROM {} WHERE record = $1 AND position >= $2", table));
        m_add = &m_connection.Prepare(
            fmt::format("INSERT INTO {} (record, position, target) VALUES ($1, $2, $3)", table));
    }
    const ReferenceList& before = ListIn(saved);
    const ReferenceList& after = ListIn(list);
    const std::size_t same = CommonLength(before, after);
    if (same < before.size()) {
        m_cut->BindAll(record, same);
        m_cut->Execute();
    }
    for (std::size_t position = same; position < after.size(); ++position) {
        m_add->BindAll(record, position, after[position]);
        m_add->Execute();
    }
}

}  // namespace recorddb
