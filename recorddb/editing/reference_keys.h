#ifndef RECORDDB_EDITING_REFERENCE_KEYS_H
#define RECORDDB_EDITING_REFERENCE_KEYS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "recorddb/editing/key_search.h"
#include "recorddb/model/schema.h"
#include "recorddb/sql/connection.h"
#include "recorddb/store/field_value.h"

namespace recorddb {

// Translates between the unique keys by which people refer to records and their dbids. The text of
// a key is its one field, or its fields in order with single blanks between them; a field that is a
// reference stands there by the key of the record it points at.
class ReferenceKeys : private KeyDirectory {
  public:
    // Connection and schema outlive the object.
    ReferenceKeys(sql::Connection& connection, const schema::Schema& schema,
                  KeySearchLimits limits = {});

    const KeySearchLimits& Limits() const { return m_limits; }

    // The record of a type with that key, searched within the limits. Throws sql::Error.
    KeyMatch Find(const schema::RecordType& type, std::string_view key);

    // The key of a record; nothing when there is no such record. Throws sql::Error.
    std::optional<std::string> KeyOf(const schema::RecordType& type, std::int64_t dbid);

    // A value as people write it, references by key: one text, those of a list in its order, or
    // none. Throws sql::Error.
    std::vector<std::string> TextsOf(const schema::Field& field, const FieldValue& value);

    // The keys of records of this session may have changed.
    void Forget();

  private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    using KeyCache = std::unordered_map<std::string, std::int64_t, TextHash, std::equal_to<>>;

    struct TypeKeys {
        sql::Statement* find = nullptr;
        sql::Statement* key = nullptr;
        KeyCache known;
    };

    bool MayRemember();
    std::optional<std::int64_t> Known(const schema::RecordType& type,
                                      std::string_view key) override;
    void Remember(const schema::RecordType& type, std::string_view key, std::int64_t dbid) override;
    std::int64_t LookUp(const schema::RecordType& type,
                        const std::vector<FieldValue>& values) override;
    std::optional<std::string> KeyOf(const schema::RecordType& type, std::int64_t dbid, int depth);
    sql::Statement& FindStatement(const schema::RecordType& type);
    sql::Statement& KeyStatement(const schema::RecordType& type);
    TypeKeys& Keys(const schema::RecordType& type) {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }

    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    std::vector<TypeKeys> m_types;
    KeySearchLimits m_limits;
    int m_readsLeft = 0;  // of records, for the key that is being put together
    // The state of the connection in which what is known was read.
    std::uint64_t m_transactionCount = 0;
    std::uint64_t m_rollbackCount = 0;
};

}  // namespace recorddb

#endif
