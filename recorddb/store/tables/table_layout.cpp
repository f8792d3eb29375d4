#include "recorddb/store/tables/table_layout.h"

#include <fmt/format.h>

#include "recorddb/model/names.h"
#include "recorddb/sql.h"

namespace recorddb {

namespace {

// A name as an SQL text, which the functions take for an identifier.
std::string Literal(const std::string& name) {
    return fmt::format("'{}'", sql::Quoted(name));
}

std::string OnEveryMachine(const std::string& table) {
    return fmt::format("SELECT create_reference_table({})", Literal(table));
}

std::string SpreadBy(const std::string& table, std::string_view column,
                     const std::string& beside = "none") {
    return fmt::format("SELECT create_distributed_table({}, '{}', colocate_with := {})",
                       Literal(table), column, beside == "none" ? "'none'" : Literal(beside));
}

}  // namespace

// The first spread table makes the pieces, beside which all that goes by a record's dbid is put.
// The journal, zt_schema, zt_turn and zt_last_dbid stay with the coordinator.
std::vector<std::string> SpreadingStatements(const schema::Schema& schema) {
    const std::string first = "zt_history";
    std::vector<std::string> statements = {SpreadBy(first, "record"),
                                           SpreadBy("zt_attachment", "record", first),
                                           SpreadBy("zt_duplicate", "duplicate", first),
                                           SpreadBy("zt_content", "sha256"),
                                           SpreadBy("zt_key", "hash"),
                                           OnEveryMachine("zt_record_type")};
    for (const schema::RecordType& type : schema.Types()) {
        statements.push_back(type.spread ? SpreadBy(type.name, schema::kDbIdName, first)
                                         : OnEveryMachine(type.name));
        for (const schema::Field& field : type.fields) {
            if (field.kind == schema::FieldKind::ReferenceList) {
                const std::string list = schema::ListTableName(type, field);
                statements.push_back(type.spread ? SpreadBy(list, "record", first)
                                                 : OnEveryMachine(list));
            }
        }
    }
    return statements;
}

}  // namespace recorddb
