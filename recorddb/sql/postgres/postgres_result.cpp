#include "recorddb/sql/postgres/postgres_result.h"

#include <libpq-fe.h>

#include <charconv>

namespace recorddb::sql {

namespace {

// The numbers that the server has for its own types; they never change.
enum TypeId : Oid {
    kBool = 16,
    kBytes = 17,
    kInt8 = 20,
    kInt2 = 21,
    kInt4 = 23,
    kFloat4 = 700,
    kFloat8 = 701,
    kNumeric = 1700
};

std::byte HexDigit(char digit) {
    constexpr int letters = 10;
    return static_cast<std::byte>(digit <= '9' ? digit - '0' : digit - 'a' + letters);
}

// Bytes come as "\x00ff".
std::vector<std::byte> BytesOfHex(std::string_view text) {
    text.remove_prefix(2);
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(HexDigit(text[i]) << 4U | HexDigit(text[i + 1]));
    }
    return bytes;
}

}  // namespace

void PostgresResult::Clearer::operator()(pg_result* result) const noexcept {
    PQclear(result);
}

int PostgresResult::RowCount() const {
    return m_result == nullptr ? 0 : PQntuples(m_result.get());
}

int PostgresResult::ColumnCount() const {
    return m_result == nullptr ? 0 : PQnfields(m_result.get());
}

int PostgresResult::ParameterCount() const {
    return m_result == nullptr ? 0 : PQnparams(m_result.get());
}

std::string_view PostgresResult::Command() const {
    return m_result == nullptr ? std::string_view() : PQcmdStatus(m_result.get());
}

std::int64_t PostgresResult::AffectedRows() const {
    // The server counts the rows of a query, too.
    if (Command().starts_with("SELECT")) {
        return 0;
    }
    const std::string_view digits = m_result == nullptr ? "" : PQcmdTuples(m_result.get());
    std::int64_t count = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), count);
    return count;
}

std::size_t PostgresResult::Size() const {
    std::size_t size = 0;
    for (int row = 0; row < RowCount(); ++row) {
        for (int column = 0; column < ColumnCount(); ++column) {
            size += static_cast<std::size_t>(PQgetlength(m_result.get(), row, column));
        }
    }
    return size;
}

bool PostgresResult::IsNull(int row, int column) const {
    return PQgetisnull(m_result.get(), row, column) != 0;
}

std::string_view PostgresResult::Text(int row, int column) const {
    return {PQgetvalue(m_result.get(), row, column),
            static_cast<std::size_t>(PQgetlength(m_result.get(), row, column))};
}

std::int64_t PostgresResult::Int(int row, int column) const {
    const std::string_view text = Text(row, column);
    if (PQftype(m_result.get(), column) == kBool) {
        return text == "t" ? 1 : 0;
    }
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::vector<std::byte> PostgresResult::Bytes(int row, int column) const {
    const std::string_view text = Text(row, column);
    if (!IsNull(row, column) && PQftype(m_result.get(), column) == kBytes) {
        return BytesOfHex(text);
    }
    const auto* const data = reinterpret_cast<const std::byte*>(text.data());
    return {data, data + text.size()};
}

Storage PostgresResult::StorageOf(int row, int column) const {
    if (IsNull(row, column)) {
        return Storage::Null;
    }
    switch (PQftype(m_result.get(), column)) {
        case kBool:
        case kInt2:
        case kInt4:
        case kInt8:
            return Storage::Integer;
        case kFloat4:
        case kFloat8:
        case kNumeric:
            return Storage::Real;
        case kBytes:
            return Storage::Blob;
        default:
            return Storage::Text;
    }
}

}  // namespace recorddb::sql
