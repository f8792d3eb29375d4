#include "tool/commands/show_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/process/usage_error.h"
#include "tool/report/record_printer.h"

namespace tool {

namespace {

using recorddb::Database;
using recorddb::RecordReader;
using recorddb::RecordView;
using recorddb::schema::RecordType;

const RecordType& FindType(const Database& database, const std::string& name) {
    if (const RecordType* type = database.GetSchema().FindType(name)) {
        return *type;
    }
    std::string known;
    for (const RecordType& type : database.GetSchema().Types()) {
        known += (known.empty() ? "" : ", ") + type.name;
    }
    throw UsageError(fmt::format("there is no record type \"{}\"; there are {}", name, known));
}

void ShowTypes(const Database& database, RecordReader& reader, std::ostream& out) {
    std::size_t width = 0;
    for (const RecordType& type : database.GetSchema().Types()) {
        width = std::max(width, type.name.size());
    }
    for (const RecordType& type : database.GetSchema().Types()) {
        out << fmt::format("{:<{}}  {:>9}\n", type.name, width, reader.Count(type));
    }
    if (database.GetLayout() == recorddb::Layout::Sharded) {
        out << "layout: sharded\n";
    }
}

void ShowRecords(const RecordType& type, RecordReader& reader, std::ostream& out) {
    std::optional<RecordView> record = reader.Next(type, 0);
    while (record) {
        PrintLine(*record, reader.Key(type, record->dbid), out);
        record = reader.Next(type, record->dbid);
    }
}

void ShowRecord(const RecordType& type, const std::string& id, RecordReader& reader,
                std::ostream& out) {
    const std::optional<RecordView> record = reader.Find(type, id);
    if (!record) {
        throw UsageError(fmt::format("there is no {} \"{}\"; `show DATABASE {}` lists them",
                                     type.name, id, type.name));
    }
    PrintRecord(*record, reader, out);
}

}  // namespace

void RunShow(const ShowOptions& options, std::ostream& out) {
    const auto database = Database::Open(
        options.database, options.immutable ? Database::Mode::Immutable : Database::Mode::ReadOnly);
    // All that is shown is of one moment, whoever writes meanwhile.
    const auto moment = database->Begin();
    RecordReader reader(*database);
    if (options.type.empty()) {
        ShowTypes(*database, reader, out);
        return;
    }
    const RecordType& type = FindType(*database, options.type);
    if (options.id.empty()) {
        ShowRecords(type, reader, out);
    } else {
        ShowRecord(type, options.id, reader, out);
    }
}

}  // namespace tool
