#include "tool/commands/init_command.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "tool/process/usage_error.h"
#include "tool/text/masked_password.h"
#include "tool/text/number_text.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

bool Exists(const std::string& file) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(file, ignored));
}

// The engine would take a log that lies beside the new database for its own, or empty it. Beside a
// database that exists already, the log belongs to that.
void CheckSideFiles(const std::string& database) {
    if (Exists(database)) {
        return;
    }
    for (const std::string& file : recorddb::sql::SideFiles(database)) {
        if (Exists(file)) {
            throw UsageError(fmt::format(
                "{}: this file is in the way: one of this name belongs to the database {}; if it "
                "was left by an earlier database, move it there, or remove it",
                file, database));
        }
    }
}

// Whether the tables of a new sharded database do stand on several machines.
std::string SpreadingOf(const std::string& database) {
    const auto connection = recorddb::sql::Open(database, recorddb::sql::OpenMode::ReadOnly);
    return connection->CanSpreadTables()
               ? "layout sharded: its tables are spread over the machines of the server\n"
               : "layout sharded: this server has no machines to spread tables over (the extension "
                 "citus is not in the database), so they are ordinary tables\n";
}

}  // namespace

void RunInit(const std::string& database, const std::string& schemaFile, recorddb::Layout layout,
             std::ostream& out) {
    const bool isSharded = layout == recorddb::Layout::Sharded;
    if (isSharded && !recorddb::sql::IsServerUrl(database)) {
        throw UsageError(
            fmt::format("--layout sharded is for a database on a server, and {} is a "
                        "file, which stands on one machine",
                        database));
    }
    const auto schema = recorddb::schema::ReadSchemaFile(schemaFile);
    CheckSideFiles(database);
    recorddb::Database::Create(database, schema, layout);
    std::string names;
    for (const auto& type : schema.Types()) {
        names += (names.empty() ? "" : ", ") + type.name;
    }
    out << fmt::format("{}: created with {}: {}\n", VisibleText(WithoutPasswords(database)),
                       CountOf(schema.Types().size(), "record type"), names);
    if (isSharded) {
        out << SpreadingOf(database);
    }
}

}  // namespace tool
