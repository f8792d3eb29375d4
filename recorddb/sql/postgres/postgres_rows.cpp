#include "recorddb/sql/postgres/postgres_rows.h"

#include <utility>

#include "recorddb/errors.h"

namespace recorddb::sql {

PostgresRows::PostgresRows(PostgresHandle& handle, std::string_view sql)
    : m_handle(handle),
      m_generation(handle.Generation()),
      m_name(handle.NewName()),
      m_sql(sql),
      m_parameters(0),
      m_columnCount(0) {
    if (sql.find_first_not_of(" \t\r\n;") == std::string_view::npos) {
        throw Error(ErrorKind::Other, "there is no statement in the text", m_sql);
    }
    const PostgresResult description = handle.Prepare(m_name, m_sql);
    m_parameters = PostgresParameters(description.ParameterCount());
    m_columnCount = description.ColumnCount();
    m_blobs.resize(static_cast<std::size_t>(m_columnCount));
}

PostgresRows::~PostgresRows() {
    if (m_generation == m_handle.Generation()) {
        m_handle.Forget(m_name);
    }
}

void PostgresRows::EnsurePrepared() {
    if (m_generation != m_handle.Generation()) {
        m_handle.Prepare(m_name, m_sql);
        m_generation = m_handle.Generation();
    }
}

PostgresParameters& PostgresRows::Idle() {
    if (m_underWay) {
        throw Error(ErrorKind::Other, "a parameter is bound in the middle of an execution", m_sql);
    }
    return m_parameters;
}

void PostgresRows::BindInt(int parameter, std::int64_t value) {
    Idle().SetInt(parameter, value);
}

void PostgresRows::BindText(int parameter, std::string_view text) {
    Idle().SetText(parameter, text);
}

void PostgresRows::BindBlob(int parameter, std::span<const std::byte> data) {
    Idle().SetBlob(parameter, data);
}

void PostgresRows::BindNull(int parameter) {
    Idle().SetNull(parameter);
}

bool PostgresRows::IsNull(int column) const {
    return m_fetched.IsNull(m_row, column);
}

std::int64_t PostgresRows::Int(int column) const {
    return m_fetched.Int(m_row, column);
}

std::string_view PostgresRows::Text(int column) const {
    return m_fetched.Text(m_row, column);
}

std::span<const std::byte> PostgresRows::Blob(int column) const {
    std::vector<std::byte>& bytes = m_blobs.at(static_cast<std::size_t>(column));
    bytes = m_fetched.Bytes(m_row, column);
    return bytes;
}

Storage PostgresRows::StorageOf(int column) const {
    return m_fetched.StorageOf(m_row, column);
}

void PostgresRows::Take(PostgresResult rows) {
    m_fetched = std::move(rows);
    m_row = -1;
    m_underWay = true;
}

bool PostgresRows::NextFetched() {
    return ++m_row < m_fetched.RowCount();
}

void PostgresRows::Clear() noexcept {
    m_fetched = PostgresResult();
    m_parameters.Clear();
    m_underWay = false;
}

}  // namespace recorddb::sql
