#include "recorddb/sql/postgres/postgres_array.h"

#include <limits>

#include "recorddb/errors.h"
#include "recorddb/sql/postgres/postgres_text.h"

namespace recorddb::sql {

namespace {

// The numbers that the server has for these types; they never change.
constexpr std::int32_t kBigintTypeId = 20;
constexpr std::int32_t kTextTypeId = 25;

constexpr unsigned kByteBits = 8;
constexpr std::int32_t kNullLength = -1;  // in the place of a length

// What an array begins with: the number of dimensions, whether there are NULLs, the type of the
// values; for the one dimension, the number of values and that of the first.
constexpr std::size_t kNullsPosition = 4;
constexpr std::size_t kCountPosition = 12;

// Writes a number with its highest byte first.
template <typename Unsigned>
void PutHighestFirst(std::byte* to, Unsigned number) {
    for (std::size_t i = sizeof(number); i-- > 0; number >>= kByteBits) {
        to[i] = static_cast<std::byte>(number & 0xFFU);
    }
}

}  // namespace

PostgresArray::PostgresArray(CellType type) : m_type(type) {
    Clear();
}

void PostgresArray::Clear() {
    m_bytes.clear();
    m_count = 0;
    m_hasNull = false;
    AddInt32(1);
    AddInt32(0);
    AddInt32(m_type == CellType::Integer ? kBigintTypeId : kTextTypeId);
    AddInt32(0);
    AddInt32(1);
}

std::size_t PostgresArray::Add(const Cell& value) {
    const std::size_t before = m_bytes.size();
    ++m_count;
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        AddInt32(sizeof(*number));
        const std::size_t position = m_bytes.size();
        m_bytes.resize(position + sizeof(*number));
        PutHighestFirst(&m_bytes[position], static_cast<std::uint64_t>(*number));
    } else if (const auto* const text = std::get_if<std::string_view>(&value)) {
        CheckStorable(*text);
        AddInt32(static_cast<std::int32_t>(text->size()));
        const auto* const data = reinterpret_cast<const std::byte*>(text->data());
        m_bytes.insert(m_bytes.end(), data, data + text->size());
    } else {
        AddInt32(kNullLength);
        m_hasNull = true;
    }
    return m_bytes.size() - before;
}

std::span<const std::byte> PostgresArray::Bytes() {
    PutInt32(kNullsPosition, m_hasNull ? 1 : 0);
    PutInt32(kCountPosition, m_count);
    return m_bytes;
}

void PostgresArray::AddInt32(std::int32_t number) {
    m_bytes.resize(m_bytes.size() + sizeof(number));
    PutInt32(m_bytes.size() - sizeof(number), number);
}

void PostgresArray::PutInt32(std::size_t position, std::int32_t number) {
    PutHighestFirst(&m_bytes[position], static_cast<std::uint32_t>(number));
}

}  // namespace recorddb::sql
