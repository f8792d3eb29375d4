#include "recorddb/sql/postgres/postgres_parameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "recorddb/errors.h"
#include "recorddb/sql/postgres/postgres_text.h"

namespace recorddb::sql {

namespace {

constexpr int kTextFormat = 0;
constexpr int kBinaryFormat = 1;

}  // namespace

PostgresParameters::PostgresParameters(int count)
    : m_texts(static_cast<std::size_t>(count)),
      m_values(m_texts.size(), nullptr),
      m_lengths(m_texts.size(), 0),
      m_formats(m_texts.size(), kTextFormat) {}

std::size_t PostgresParameters::PositionOf(int parameter) const {
    if (parameter < 1 || parameter > Count()) {
        throw Error(ErrorKind::Other, fmt::format("the statement has no parameter ${}", parameter),
                    "");
    }
    return static_cast<std::size_t>(parameter - 1);
}

void PostgresParameters::SetInt(int parameter, std::int64_t value) {
    const std::size_t position = PositionOf(parameter);
    m_texts[position] = std::to_string(value);
    m_values[position] = m_texts[position].c_str();
    m_formats[position] = kTextFormat;
}

void PostgresParameters::SetText(int parameter, std::string_view text) {
    const std::size_t position = PositionOf(parameter);
    CheckStorable(text);
    m_texts[position] = text;
    m_values[position] = m_texts[position].c_str();
    m_formats[position] = kTextFormat;
}

void PostgresParameters::SetBlob(int parameter, std::span<const std::byte> data) {
    const std::size_t position = PositionOf(parameter);
    if (data.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw Error(ErrorKind::Other, "the value is too large for the server", "");
    }
    // A null pointer would mean NULL, which is not the empty value.
    m_values[position] = data.empty() ? "" : reinterpret_cast<const char*>(data.data());
    m_lengths[position] = static_cast<int>(data.size());
    m_formats[position] = kBinaryFormat;
}

void PostgresParameters::SetNull(int parameter) {
    m_values[PositionOf(parameter)] = nullptr;
}

void PostgresParameters::Clear() noexcept {
    std::fill(m_values.begin(), m_values.end(), nullptr);
}

}  // namespace recorddb::sql
