#ifndef RECORDDB_SCHEMA_H
#define RECORDDB_SCHEMA_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/export.h"

namespace recorddb::schema {

// True when two names of record types or fields are the same: without regard to ASCII case, since
// such names are SQL identifiers.
RECORDDB_API bool SameName(std::string_view left, std::string_view right);

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
RECORDDB_API std::string_view FieldKindName(FieldKind kind);

// The kind that a schema file may ask for by this word (exact); nothing when there is none.
RECORDDB_API std::optional<FieldKind> FieldKindFromName(std::string_view name);

// The words of all those kinds, in the order of their codes.
RECORDDB_API std::vector<std::string_view> FieldKindNames();

// True when the field is a column of its record type's table. Reference lists have a table of their
// own; attachments and history stand in tables of the whole database.
RECORDDB_API bool HasColumn(FieldKind kind);

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

// The names of the fields that types get by themselves.
constexpr std::string_view kDbIdName = "dbid";
constexpr std::string_view kDisplayIdName = "id";
constexpr std::string_view kStateName = "state";

// The numbers are the kind codes of the core API.
enum class RecordKind { WithStates = 1, WithoutStates = 2 };

struct RECORDDB_API RecordType {
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

    // Where tables are spread over machines, records of this type are: it has states, refers to a
    // type that is spread, or the schema says so. Other types stand on every machine.
    bool spread = false;

    bool HasStates() const { return kind == RecordKind::WithStates; }

    // The field of that name, without regard to case; null when there is none.
    const Field* FindField(std::string_view fieldName) const;

    // The field that history is written to: the first of that kind; null when there is none.
    const Field* HistoryField() const;

    // True for a state of this type (exact).
    bool IsState(std::string_view state) const;
};

// The display id of a number, such as BUG00000042: at least eight digits.
RECORDDB_API std::string FormatDisplayId(std::string_view prefix, std::int64_t number);

// The record types of a database. Made by ReadSchema; does not change, so pointers to its types and
// fields stay valid for its life, also when it is moved.
class RECORDDB_API Schema {
  public:
    // `types` have the ids 1, 2 ... in their order; `text` is the YAML that they were read from.
    Schema(std::vector<RecordType> types, std::string text);

    // In the order of the schema file.
    const std::vector<RecordType>& Types() const { return m_types; }

    // The type of that name, without regard to case; null when there is none.
    const RecordType* FindType(std::string_view name) const;

    // The type with that id. Throws std::out_of_range when there is none.
    const RecordType& Type(std::int64_t id) const;

    const std::string& Text() const { return m_text; }

  private:
    std::vector<RecordType> m_types;
    std::string m_text;
};

// Reads a schema from YAML text in UTF-8; `file` is the name that errors give. Throws SchemaError
// at the first thing that is wrong.
RECORDDB_API Schema ReadSchema(const std::string& text, const std::string& file);

// Reads the schema file at `path`. Throws SchemaError, also when the file cannot be read or has
// more than 16 MiB.
RECORDDB_API Schema ReadSchemaFile(const std::string& path);

}  // namespace recorddb::schema

#endif
