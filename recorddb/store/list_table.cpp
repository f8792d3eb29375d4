#include "recorddb/store/list_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "recorddb/model/names.h"

namespace recorddb {

namespace {

const ReferenceList& ListIn(const FieldValue& value) {
    static const ReferenceList kEmpty;
    const auto* const list = std::get_if<ReferenceList>(&value);
    return list != nullptr ? *list : kEmpty;
}

}  // namespace

FieldValue ListTable::Load(std::int64_t record) {
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
    const auto [oldEnd, newEnd] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    std::int64_t position = std::distance(before.begin(), oldEnd);
    if (oldEnd != before.end()) {
        m_cut->BindAll(record, position);
        m_cut->Execute();
    }
    for (auto target = newEnd; target != after.end(); ++target) {
        m_add->BindAll(record, position, *target);
        m_add->Execute();
        ++position;
    }
}

}  // namespace recorddb
