#include "tests/scripted/scripted_result_set.h"

#include <utility>

ScriptedResultSet::ScriptedResultSet(ScriptedCore& core, std::string label, ScriptedMatches found)
    : m_core(core), m_label(std::move(label)), m_found(std::move(found)) {
    m_core.HandleMade();
}

ScriptedResultSet::~ScriptedResultSet() {
    m_core.HandleReleased("result set of " + m_label);
}

void ScriptedResultSet::SetRowLimit(long rows) {
    m_core.Called(CallLog::Kind::kCall, "", "SetRowLimit", {rows});
}

void ScriptedResultSet::Prepare() {
    m_core.Called(CallLog::Kind::kCall, "", "Prepare", {});
}

void ScriptedResultSet::Execute() {
    m_core.Called(CallLog::Kind::kCall, "", "Execute", {});
}

void ScriptedResultSet::FetchNext(int& status) {
    m_core.Called(CallLog::Kind::kCall, "", "FetchNext", {status});
    const int own = m_rowsFetched < m_found.rows.size() ? 1 : 0;
    ++m_rowsFetched;
    status = m_found.status.value_or(own);
}

long ScriptedResultSet::GetRowCount() {
    m_core.Called(CallLog::Kind::kCall, "", "GetRowCount", {});
    return m_found.count.value_or(static_cast<long>(m_found.rows.size()));
}

void ScriptedResultSet::GetColumn(int column, Obx_String& value, int reserved) {
    m_core.Called(CallLog::Kind::kCall, "", "GetColumn", {column, reserved});
    if (m_rowsFetched >= 1 && m_rowsFetched <= m_found.rows.size()) {
        value = m_found.rows[m_rowsFetched - 1];
    }
}
