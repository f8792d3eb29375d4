#include "recorddb/store/tables/tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "recorddb/model/names.h"
#include "recorddb/sql.h"
#include "recorddb/store/tables/table_layout.h"

namespace recorddb::schema {

namespace {

using sql::Quoted;

std::string_view ColumnType(FieldKind kind, const sql::Dialect& dialect) {
    // BIGINT, since INTEGER has 32 bits in PostgreSQL.
    return kind == FieldKind::Integer || kind == FieldKind::Reference ? "BIGINT" : dialect.textType;
}

// Collects the statements of a script. Foreign keys go into the table where the engine lets them
// name tables that do not exist yet, otherwise after all tables.
class ScriptWriter {
  public:
    ScriptWriter(const sql::Dialect& dialect, Layout layout)
        : m_dialect(dialect), m_layout(layout) {}

    bool Spreads(const RecordType& type) const { return IsSpread(m_layout, type); }

    void BeginTable(const std::string& name) {
        m_table = Quoted(name);
        m_parts.clear();
    }

    void Part(std::string part) { m_parts.push_back(std::move(part)); }

    void ForeignKey(const std::string& column, const RecordType& target, std::string_view action) {
        std::string constraint = fmt::format("FOREIGN KEY ({}) REFERENCES {} ({}){}", column,
                                             Quoted(target.name), kDbIdName, action);
        if (m_dialect.foreignKeysAhead) {
            m_parts.push_back(std::move(constraint));
        } else {
            m_late.push_back(fmt::format("ALTER TABLE {} ADD {};\n", m_table, constraint));
        }
    }

    void EndTable(std::string_view suffix) {
        m_tables += fmt::format("CREATE TABLE {} (\n    {}\n){};\n", m_table,
                                fmt::join(m_parts, ",\n    "), suffix);
    }

    void Index(bool unique, const std::string& name, const std::string& columns) {
        m_late.push_back(fmt::format("CREATE {}INDEX {} ON {} ({});\n", unique ? "UNIQUE " : "",
                                     name, m_table, columns));
    }

    RecordTablesScripts Scripts() const { return {m_tables, m_late}; }

  private:
    const sql::Dialect& m_dialect;
    Layout m_layout;
    std::string m_table;
    std::vector<std::string> m_parts;
    std::string m_tables;
    std::vector<std::string> m_late;
};

bool IsSingleKey(const RecordType& type, const Field& field) {
    return type.key.size() == 1 && type.key.front() == field.index;
}

// Of a type that is spread, no index sees all records: what is unique stands in zt_key, and these
// serve people's queries.
void WriteIndexes(ScriptWriter& writer, const RecordType& type) {
    const bool unique = !writer.Spreads(type);
    const bool keyHasDbId = std::find(type.key.begin(), type.key.end(), 0) != type.key.end();
    // A key that contains the dbid is unique without an index.
    if (!keyHasDbId) {
        std::vector<std::string> columns;
        for (const std::size_t part : type.key) {
            columns.push_back(Quoted(type.fields[part].name));
        }
        writer.Index(unique, fmt::format("zt_key_{}", type.id),
                     fmt::format("{}", fmt::join(columns, ", ")));
    }
    for (const Field& field : type.fields) {
        if (field.kind == FieldKind::DbId || IsSingleKey(type, field)) {
            continue;
        }
        if (field.unique) {
            writer.Index(unique, fmt::format("zt_unique_{}_{}", type.id, field.index),
                         Quoted(field.name));
        } else if (field.kind == FieldKind::Reference) {
            writer.Index(false, fmt::format("zt_reference_{}_{}", type.id, field.index),
                         Quoted(field.name));
        }
    }
}

void WriteTypeTable(ScriptWriter& writer, const Schema& schema, const RecordType& type,
                    const sql::Dialect& dialect) {
    writer.BeginTable(type.name);
    writer.Part(fmt::format("{} {}", kDbIdName, dialect.dbIdType));
    writer.Part(fmt::format("{} BIGINT NOT NULL DEFAULT 1", kVersionColumn));
    for (const Field& field : type.fields) {
        if (field.kind == FieldKind::DbId || !HasColumn(field.kind)) {
            continue;
        }
        writer.Part(fmt::format("{} {}{}", Quoted(field.name), ColumnType(field.kind, dialect),
                                field.required ? " NOT NULL" : ""));
    }
    for (const Field& field : type.fields) {
        if (field.kind == FieldKind::Reference && !writer.Spreads(schema.Type(field.target))) {
            writer.ForeignKey(Quoted(field.name), schema.Type(field.target), "");
        }
    }
    writer.EndTable("");
    WriteIndexes(writer, type);
}

void WriteListTable(ScriptWriter& writer, const Schema& schema, const RecordType& type,
                    const Field& field, const sql::Dialect& dialect) {
    writer.BeginTable(ListTableName(type, field));
    writer.Part("record BIGINT NOT NULL");
    writer.Part("position BIGINT NOT NULL");
    writer.Part("target BIGINT NOT NULL");
    writer.Part("PRIMARY KEY (record, position)");
    writer.ForeignKey("record", type, " ON DELETE CASCADE");
    if (!writer.Spreads(schema.Type(field.target))) {
        writer.ForeignKey("target", schema.Type(field.target), "");
    }
    writer.EndTable(dialect.clusteredTable);
    writer.Index(false, fmt::format("zt_list_{}_{}", type.id, field.index), "target");
}

}  // namespace

RecordTablesScripts ScriptsOfRecordTables(const Schema& schema, const sql::Dialect& dialect,
                                          Layout layout) {
    ScriptWriter writer(dialect, layout);
    for (const RecordType& type : schema.Types()) {
        WriteTypeTable(writer, schema, type, dialect);
        for (const Field& field : type.fields) {
            if (field.kind == FieldKind::ReferenceList) {
                WriteListTable(writer, schema, type, field, dialect);
            }
        }
    }
    return writer.Scripts();
}

std::string RecordTablesScript(const Schema& schema, const sql::Dialect& dialect) {
    const RecordTablesScripts scripts = ScriptsOfRecordTables(schema, dialect);
    return fmt::format("{}{}", scripts.tables, fmt::join(scripts.rest, ""));
}

}  // namespace recorddb::schema
