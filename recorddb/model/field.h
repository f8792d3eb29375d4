#ifndef RECORDDB_MODEL_FIELD_H
#define RECORDDB_MODEL_FIELD_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace recorddb::schema {

// What a field holds. The numbers are the type codes of the core API and do not change.
enum class FieldKind {
    Text = 1,
    Multiline = 2,
    Integer = 3,
    DateTime = 4,
    Reference = 5,
    ReferenceList = 6,
    Attachments = 7,
    DisplayId = 8,
    State = 9,
    History = 10,
    DbId = 11,
    Choice = 12
};

// The word for a kind in a schema file; kinds that every type gets by itself have names as well.
std::string_view FieldKindName(FieldKind kind);

// The kind that a schema file may ask for by this word (exact).
std::optional<FieldKind> FieldKindFromName(std::string_view name);

// The words of all those kinds, in the order of their codes.
std::vector<std::string_view> FieldKindNames();

// True when the field is a column of its record type's table. Reference lists have a table of their
// own; attachments and history stand in tables of the whole database.
bool HasColumn(FieldKind kind);

struct Field {
    std::string name;  // as the schema writes it
    FieldKind kind = FieldKind::Text;
    std::size_t index = 0;       // position in RecordType::fields
    std::int64_t maxLength = 0;  // in characters (Unicode code points); 0: no limit
    bool required = false;
    bool unique = false;                 // no two records of the type have the same value
    std::vector<std::string> choices{};  // legal values, of a choice only
    std::int64_t target = 0;             // id of the referenced type, of references only
};

}  // namespace recorddb::schema

#endif
