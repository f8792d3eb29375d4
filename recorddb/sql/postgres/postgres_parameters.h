#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_PARAMETERS_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_PARAMETERS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace recorddb::sql {

// The values of a statement's parameters as libpq takes them: numbers and texts as text, which the
// server reads as the type that it has worked out for the parameter; blobs as they are.
class PostgresParameters {
  public:
    explicit PostgresParameters(int count);

    // Parameters count from 1. Texts are copied, blobs borrowed until they are set anew or cleared.
    // Throw Error for a parameter that there is not, and for a text with a NUL, which the server
    // cannot store.
    void SetInt(int parameter, std::int64_t value);
    void SetText(int parameter, std::string_view text);
    void SetBlob(int parameter, std::span<const std::byte> data);
    void SetNull(int parameter);

    // Sets all to NULL.
    void Clear() noexcept;

    int Count() const { return static_cast<int>(m_values.size()); }
    const char* const* Values() const { return m_values.data(); }
    const int* Lengths() const { return m_lengths.data(); }
    const int* Formats() const { return m_formats.data(); }

  private:
    std::size_t PositionOf(int parameter) const;

    std::vector<std::string> m_texts;
    std::vector<const char*> m_values;
    std::vector<int> m_lengths;
    std::vector<int> m_formats;
};

}  // namespace recorddb::sql

#endif
