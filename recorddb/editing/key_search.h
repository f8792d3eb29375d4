#ifndef RECORDDB_EDITING_KEY_SEARCH_H
#define RECORDDB_EDITING_KEY_SEARCH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "recorddb/keys.h"
#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"

namespace recorddb {

// Where a search looks up keys. Operations throw sql::Error.
class KeyDirectory {
  public:
    virtual ~KeyDirectory() = default;

    // The record of a type with a key, if it is remembered from before.
    virtual std::optional<std::int64_t> Known(const schema::RecordType& type,
                                              std::string_view key) = 0;
    virtual void Remember(const schema::RecordType& type, std::string_view key,
                          std::int64_t dbid) = 0;

    // The record of a type whose key fields have these values, in order; 0 for none.
    virtual std::int64_t LookUp(const schema::RecordType& type,
                                const std::vector<FieldValue>& values) = 0;
};

// The search for the record that one text means. The parts of a key are joined by single blanks and
// may have blanks in them, and a part that is a reference stands there by a key of its own: so the
// text is split in every possible way. Each way counts as a try, and nothing is looked up twice. An
// object searches for one text.
class KeySearch {
  public:
    // All of them outlive the object.
    KeySearch(const schema::Schema& schema, KeyDirectory& directory, const KeySearchLimits& limits)
        : m_schema(schema),
          m_directory(directory),
          m_limits(limits),
          m_triesLeft(limits.maxTries) {}

    // Throws sql::Error.
    KeyMatch Find(const schema::RecordType& type, std::string_view text);

  private:
    // A part of the text, taken as the key of a type.
    struct Reading {
        std::int64_t type;
        const char* begin;
        std::size_t size;
        bool operator==(const Reading&) const = default;
    };
    struct ReadingHash {
        std::size_t operator()(const Reading& reading) const;
    };

    // A key that is being put together.
    struct Composition {
        const schema::RecordType& type;
        std::vector<FieldValue> values;  // of the parts before the current one
        KeyMatch match;                  // of what was put together so far
    };

    KeyMatch FindAnew(const schema::RecordType& type, std::string_view text);
    void TakePart(Composition& key, std::string_view rest);
    void TakeLastPart(Composition& key, std::string_view rest);
    std::optional<FieldValue> ValueOf(const schema::Field& field, std::string_view text,
                                      KeyMatch& match);
    bool GivesUp();

    const schema::Schema& m_schema;
    KeyDirectory& m_directory;
    const KeySearchLimits& m_limits;
    std::int64_t m_triesLeft;
    int m_depth = 0;  // of keys within keys
    std::unordered_map<Reading, KeyMatch, ReadingHash> m_found;
};

}  // namespace recorddb

#endif
