#include "tool/commands/init_command.h"

#include <fmt/format.h>

#include "recorddb/database.h"
#include "recorddb/schema/schema_file.h"
#include "tool/number_text.h"

namespace tool {

void RunInit(const std::string& database, const std::string& schemaFile, std::ostream& out) {
    const auto schema = recorddb::schema::ReadSchemaFile(schemaFile);
    recorddb::Database::Create(database, schema);
    std::string names;
    for (const auto& type : schema.Types()) {
        names += (names.empty() ? "" : ", ") + type.name;
    }
    out << fmt::format("{}: created with {}: {}\n", database,
                       CountOf(schema.Types().size(), "record type"), names);
}

}  // namespace tool
