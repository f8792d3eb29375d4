#ifndef RECORDDB_RECORDS_REFERENCE_KEYS_H
#define RECORDDB_RECORDS_REFERENCE_KEYS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "recorddb/records/field_value.h"
#include "recorddb/schema/schema.h"
#include "recorddb/sql/connection.h"

namespace recorddb {

// What the records with a given key are.
struct KeyMatch {
    std::int64_t dbid = 0;  // of the one record; 0 when there is none
    bool several = false;   // the text can be read as the keys of different records
};

// Translates between the unique keys by which people refer to records and their dbids. The text of
// a key is its one field, or its fields in order with single blanks between them; a field that is a
// reference stands there by the key of the record it points at.
class ReferenceKeys {
  public:
    // Connection and schema outlive the object.
    ReferenceKeys(sql::Connection& connection, const schema::Schema& schema);

    // The record of a type with that key. Throws sql::Error.
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
    using Known = std::unordered_map<std::string, std::int64_t, TextHash, std::equal_to<>>;

    struct TypeKeys {
        sql::Statement* find = nullptr;
        sql::Statement* key = nullptr;
        Known known;
    };

    bool MayRemember();
    KeyMatch FindAt(const schema::RecordType& type, std::string_view key);
    KeyMatch Search(const schema::RecordType& type, std::string_view key);
    KeyMatch SearchParts(const schema::RecordType& type,
                         const std::vector<std::string_view>& parts);
    std::optional<FieldValue> PartValue(const schema::Field& field, std::string_view text,
                                        bool& several);
    std::optional<std::string> KeyOf(const schema::RecordType& type, std::int64_t dbid, int depth);
    sql::Statement& FindStatement(const schema::RecordType& type);
    sql::Statement& KeyStatement(const schema::RecordType& type);
    TypeKeys& Keys(const schema::RecordType& type) {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }

    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    std::vector<TypeKeys> m_types;
    int m_depth = 0;  // of keys within keys, in the search under way
    // The state of the connection in which what is known was read.
    std::uint64_t m_transactionCount = 0;
    std::uint64_t m_rollbackCount = 0;
};

}  // namespace recorddb

#endif
