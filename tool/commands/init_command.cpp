#include "tool/commands/init_command.h"

#include <fmt/format.h>

#include "recorddb/database.h"
#include "recorddb/schema/schema_file.h"

namespace tool {

void RunInit(const std::string& database, const std::string& schemaFile, std::ostream& out) {
    const auto schema = recorddb::schema::ReadSchemaFile(schemaFile);
    recorddb::Database::Create(database, schema);
    std::string names;
    for (const auto& type : schema.Types()) {
        names += (names.empty() ? "" : ", ") + type.name;
    }
    out << fmt::format("{}: created with {} record type{}: {}\n", database, schema.Types().size(),
                       schema.Types().size() == 1 ? "" : "s", names);
}

}  // namespace tool
