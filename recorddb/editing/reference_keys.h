#ifndef RECORDDB_EDITING_REFERENCE_KEYS_H
#define RECORDDB_EDITING_REFERENCE_KEYS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "recorddb/editing/key_search.h"
#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/key_table.h"

namespace recorddb {

// Finds the records that people refer to by their unique keys.
class ReferenceKeys : private KeyDirectory {
  public:
    // Batch, schema and table outlive the object.
    ReferenceKeys(WriteBatch& batch, const schema::Schema& schema, KeyTable& table,
                  KeySearchLimits limits = {});

    const KeySearchLimits& Limits() const { return m_limits; }

    // The record of a type with that key, searched within the limits. Throws sql::Error.
    KeyMatch Find(const schema::RecordType& type, std::string_view key);
    KeyMatch Find(const schema::RecordType& type, std::string_view key,
                  const KeySearchLimits& limits);

    // Forgets the keys found so far; for when this session has changed keys.
    void Forget();

  private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    using KeyCache = std::unordered_map<std::string, std::int64_t, TextHash, std::equal_to<>>;

    bool MayRemember();
    std::optional<std::int64_t> Known(const schema::RecordType& type,
                                      std::string_view key) override;
    void Remember(const schema::RecordType& type, std::string_view key, std::int64_t dbid) override;
    std::int64_t LookUp(const schema::RecordType& type,
                        const std::vector<FieldValue>& values) override;
    KeyCache& CacheOf(const schema::RecordType& type) {
        return m_known[static_cast<std::size_t>(type.id - 1)];
    }

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    KeyTable& m_table;
    KeySearchLimits m_limits;
    std::vector<KeyCache> m_known;  // by type
    // The state of connection and batch in which m_known was read.
    std::uint64_t m_transactionCount = 0;
    std::uint64_t m_undoCount = 0;
};

}  // namespace recorddb

#endif
