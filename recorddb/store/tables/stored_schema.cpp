#include "recorddb/store/tables/stored_schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "recorddb/errors.h"
#include "recorddb/model/names.h"
#include "recorddb/store/tables/last_dbids.h"
#include "recorddb/store/tables/own_tables.h"
#include "recorddb/store/tables/table_layout.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb::schema {

namespace {

using Problem = DatabaseError::Problem;

// What zt_schema calls the sharded layout.
constexpr std::string_view kShardedName = "sharded";

// Both numbers are compared: a later plain format may have the same `format`, but would let older
// programs read it, so its `oldest` is lower.
bool IsShardedFormat(std::int64_t format, std::int64_t oldest) {
    return format == kShardedFormat && oldest == kShardedFormat;
}

// Either of the two may know that they fit: this program knows the older formats that it can use,
// the database names the older programs that can use it.
void CheckFormat(std::int64_t format, std::int64_t oldest, std::int64_t newest,
                 const std::string& location) {
    const bool known =
        (format >= kOldestFormat && format <= kFormatVersion) || IsShardedFormat(format, oldest);
    const bool welcome = kFormatVersion >= oldest && kFormatVersion <= newest;
    if (known || welcome) {
        return;
    }
    if (format > kFormatVersion) {
        throw DatabaseError(
            Problem::FormatTooNew,
            fmt::format("{}: the database was made by a newer version of this program (its format "
                        "is {}, and this version knows formats up to {}); use that version",
                        location, format, kFormatVersion));
    }
    throw DatabaseError(Problem::FormatTooOld,
                        fmt::format("{}: the database was made by an older version of this program "
                                    "(its format is {}, and this version knows formats from {}); "
                                    "make a new one and load it again",
                                    location, format, kOldestFormat));
}

[[noreturn]] void NotOurs(const std::string& location) {
    throw DatabaseError(
        Problem::NotARecordDatabase,
        location + (sql::IsServerUrl(location)
                        ? ": there is no record database in this schema; make one there, or name "
                          "the schema that has one"
                        : ": this is a database of another program (it has no schema "
                          "of record types); make a new one in another file"));
}

std::vector<std::string> TableNames(const Schema& schema, Layout layout) {
    const auto own = OwnTables(layout);
    std::vector<std::string> names(own.begin(), own.end());
    for (const RecordType& type : schema.Types()) {
        names.push_back(type.name);
        for (const Field& field : type.fields) {
            if (field.kind == FieldKind::ReferenceList) {
                names.push_back(ListTableName(type, field));
            }
        }
    }
    return names;
}

void CheckColumns(const RecordType& type, const sql::Dialect& dialect) {
    constexpr std::size_t ownColumns = 1;  // the version
    const auto fields = std::count_if(type.fields.begin(), type.fields.end(),
                                      [](const Field& field) { return HasColumn(field.kind); });
    if (static_cast<std::size_t>(fields) + ownColumns > dialect.mostColumns) {
        throw DatabaseError(
            Problem::TooManyColumns,
            fmt::format("the record type {} has {} fields that are columns, and a table of this "
                        "engine has {} at most, of which {} is the database's own",
                        type.name, fields, dialect.mostColumns, ownColumns));
    }
}

}  // namespace

void CheckRoom(sql::Connection& connection, const Schema& schema, Layout layout,
               const std::string& location) {
    if (connection.HasTable("zt_schema")) {
        throw DatabaseError(Problem::FileExists,
                            location +
                                ": there is a record database in this schema already; name "
                                "another schema for a new one");
    }
    for (const std::string& name : TableNames(schema, layout)) {
        if (connection.HasTable(name)) {
            throw DatabaseError(
                Problem::FileExists,
                fmt::format("{}: there is a table \"{}\" in this schema already; give the record "
                            "database a schema of its own",
                            location, name));
        }
    }
    for (const RecordType& type : schema.Types()) {
        CheckColumns(type, connection.GetDialect());
    }
}

namespace {

void StorePlain(sql::Connection& connection, const Schema& schema) {
    sql::Statement& store = connection.Prepare(
        "INSERT INTO zt_schema (format_version, oldest_readable, newest_readable, schema_text) "
        "VALUES ($1, $2, $3, $4)");
    store.BindAll(kFormatVersion, kOldestReadable, kNewestReadable, schema.Text());
    store.Execute();
}

void StoreSharded(sql::Connection& connection, const Schema& schema) {
    sql::Statement& store = connection.Prepare(
        "INSERT INTO zt_schema (format_version, oldest_readable, newest_readable, schema_text, "
        "layout) VALUES ($1, $1, $1, $2, $3)");
    store.BindAll(kShardedFormat, schema.Text(), kShardedName);
    store.Execute();
    connection.Prepare("INSERT INTO zt_turn (number) VALUES (0)").Execute();
    sql::Statement& last =
        connection.Prepare("INSERT INTO zt_last_dbid (record_type, dbid) VALUES ($1, 0)");
    last.BindAll(kAttachmentNumbers);
    last.Execute();
    for (const RecordType& type : schema.Types()) {
        last.BindAll(type.id);
        last.Execute();
    }
}

Layout LoadLayout(sql::Connection& connection, const std::string& location) {
    sql::Statement& load = connection.Prepare("SELECT layout FROM zt_schema");
    const sql::ResetGuard guard(load);
    if (!load.Step() || load.Text(0) != kShardedName) {
        throw DatabaseError(
            Problem::FormatTooNew,
            fmt::format("{}: the database has a layout that this version of the program does not "
                        "know; use the version that made it",
                        location));
    }
    return Layout::Sharded;
}

}  // namespace

void StoreSchema(sql::Connection& connection, const Schema& schema, Layout layout) {
    connection.ExecuteScript(OwnTablesScript(connection.GetDialect(), layout));
    const RecordTablesScripts scripts =
        ScriptsOfRecordTables(schema, connection.GetDialect(), layout);
    connection.ExecuteScript(scripts.tables);
    if (layout == Layout::Sharded && connection.CanSpreadTables()) {
        for (const std::string& statement : SpreadingStatements(schema)) {
            connection.ExecuteScript(statement);
        }
    }
    for (const std::string& statement : scripts.rest) {
        connection.ExecuteScript(statement);
    }
    layout == Layout::Sharded ? StoreSharded(connection, schema) : StorePlain(connection, schema);
    sql::Statement& name =
        connection.Prepare("INSERT INTO zt_record_type (id, name, kind) VALUES ($1, $2, $3)");
    for (const RecordType& type : schema.Types()) {
        name.BindAll(type.id, type.name, static_cast<int>(type.kind));
        name.Execute();
    }
}

StoredSchema LoadStoredSchema(sql::Connection& connection, const std::string& location) {
    if (!connection.HasTable("zt_schema")) {
        NotOurs(location);
    }
    sql::Statement& load = connection.Prepare(
        "SELECT format_version, oldest_readable, newest_readable, schema_text FROM zt_schema");
    const sql::ResetGuard guard(load);
    if (!load.Step()) {
        NotOurs(location);
    }
    CheckFormat(load.Int(0), load.Int(1), load.Int(2), location);
    const bool isSharded = IsShardedFormat(load.Int(0), load.Int(1));
    std::string text(load.Text(3));
    return {std::move(text), isSharded ? LoadLayout(connection, location) : Layout::Plain};
}

// A view in the place of a table would answer with what it likes, and need not come to an end.
void CheckTables(sql::Connection& connection, const Schema& schema, Layout layout,
                 const std::string& location) {
    for (const std::string& name : TableNames(schema, layout)) {
        if (!connection.HasTable(name)) {
            throw DatabaseError(
                Problem::TablesChanged,
                fmt::format("{}: another program has changed the database: \"{}\" is not there, or "
                            "is no plain table; use a copy from before, or make a new database and "
                            "load it again",
                            location, name));
        }
    }
}

}  // namespace recorddb::schema
