#ifndef RECORDDB_MODEL_RECORD_TYPE_H
#define RECORDDB_MODEL_RECORD_TYPE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/model/field.h"

namespace recorddb::schema {

// The names of the fields that types get by themselves.
constexpr std::string_view dbIdName = "dbid";
constexpr std::string_view displayIdName = "id";
constexpr std::string_view stateName = "state";

// The numbers are the kind codes of the core API.
enum class RecordKind { WithStates = 1, WithoutStates = 2 };

struct RecordType {
    std::int64_t id = 0;  // the number that stands for the type in the database's own tables
    std::string name;     // as the schema writes it
    RecordKind kind = RecordKind::WithoutStates;

    // Of a kind with states only.
    std::string prefix;               // of its display ids
    std::vector<std::string> states;  // the first is the initial one
    std::optional<std::string> duplicateState;

    // First `dbid`, then (with states) `id` and `state`, then those of the schema in its order.
    std::vector<Field> fields;

    // The unique key: positions in fields, never empty. With states it is `id`.
    std::vector<std::size_t> key;

    bool HasStates() const { return kind == RecordKind::WithStates; }

    // The field of that name, without regard to case; null when there is none.
    const Field* FindField(std::string_view fieldName) const;

    // True for a state of this type (exact).
    bool IsState(std::string_view state) const;
};

// The display id of a number, such as BUG00000042: at least eight digits.
std::string FormatDisplayId(std::string_view prefix, std::int64_t number);

}  // namespace recorddb::schema

#endif
