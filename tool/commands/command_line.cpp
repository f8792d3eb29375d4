#include "tool/commands/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <sstream>
#include <string>

#include "recorddb/sql.h"
#include "tool/commands/check_command.h"
#include "tool/commands/init_command.h"
#include "tool/commands/load_command.h"
#include "tool/commands/load_workers.h"
#include "tool/commands/show_command.h"
#include "tool/commands/survey_command.h"
#include "tool/commands/verify_command.h"
#include "tool/commands/version_text.h"
#include "tool/process/exit_code.h"
#include "tool/process/processors.h"
#include "tool/process/usage_error.h"
#include "tool/text/masked_password.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

// A command's options live as long as its parser, which fills them.
struct Commands {
    std::ostream& out;
    std::ostream& err;
    std::function<int()> run;

    std::string database;
    std::string schema;
    std::string layout;
    std::string serverSchema;
    LoadOptions load;
    LoadOptions check;
    ShowOptions show;
    VerifyOptions verify;
    SurveyRequest survey;
};

constexpr const char* kDatabaseHelp =
    "the database: the path of an SQLite file, or the URL of a PostgreSQL database "
    "(postgresql://...)";
constexpr int kLongestRetry = 24 * 60 * 60;
constexpr const char* kSourceHelp =
    "packet files, folders of packet files (*.xml in name order), or - for standard input";

// The database that a command works on.
void AddDatabase(CLI::App& command, Commands& commands, std::string& database) {
    command.add_option("DATABASE", database, kDatabaseHelp)->required();
    command.add_option("--schema", commands.serverSchema,
                       "the schema of the server's database that holds the tables");
}

// A location that says which schema of a server is meant.
std::string InSchema(const std::string& database, const std::string& schema) {
    if (schema.empty() || database.empty()) {
        return database;
    }
    if (!recorddb::sql::IsServerUrl(database)) {
        throw UsageError(fmt::format("--schema {} is for a database on a server, and {} is a file",
                                     schema, database));
    }
    return recorddb::sql::WithSchema(database, schema);
}

void AddInit(CLI::App& app, Commands& commands) {
    CLI::App* init = app.add_subcommand("init", "Create a record database");
    AddDatabase(*init, commands, commands.database);
    init->add_option("SCHEMA", commands.schema, "the schema file (YAML)")->required();
    init->add_option("--layout", commands.layout,
                     "how a database on a server keeps its tables: plain, or sharded, which is for "
                     "servers that spread tables over machines")
        ->check(CLI::IsMember({"plain", "sharded"}))
        ->capture_default_str();
    init->callback([&commands] {
        commands.run = [&commands] {
            RunInit(
                commands.database, commands.schema,
                commands.layout == "sharded" ? recorddb::Layout::Sharded : recorddb::Layout::Plain,
                commands.out);
            return static_cast<int>(ExitCode::Success);
        };
    });
}

// For every command that reads records.
void AddLimits(CLI::App& command, RecordLimits& limits) {
    command
        .add_option("--max-record-size", limits.size,
                    "reject records that are not shorter than this, in bytes or with a unit: 16MB")
        ->transform(CLI::AsSizeValue(false))
        ->type_name("SIZE");
    command
        .add_option("--max-depth", limits.depth,
                    "reject records whose elements are nested deeper than this")
        ->check(CLI::PositiveNumber);
}

// Where the files of attachments are, how large they may be, and how many ways of reading a
// reference are tried.
template <typename Options>
void AddRecordOptions(CLI::App& command, Options& options) {
    command.add_option("--attachments", options.attachments,
                       "folder with the files of attachments; their names cannot lead out of it");
    command
        .add_option("--max-attachment-size", options.maxAttachmentSize,
                    "largest file that is taken as an attachment, in bytes or with a unit: 2GB")
        ->transform(CLI::AsSizeValue(false))
        ->type_name("SIZE");
    command
        .add_option("--max-reference-tries", options.maxReferenceTries,
                    "ways in which a reference is read as a key before it is given up")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
}

// For reading a database where nothing can be written beside it.
template <typename Options>
void AddImmutable(CLI::App& command, Options& options) {
    command.add_flag("--immutable", options.immutable,
                     "read a database to which certainly no program writes");
}

// For sources that are no packets.
void AddMap(CLI::App& command, std::string& map) {
    command.add_option("--map", map,
                       "map file (YAML): the SOURCEs are CSV or JSON files, or folders of them, "
                       "and this says what becomes of their rows");
}

// What a load and its rehearsal can both be asked for.
void AddImportOptions(CLI::App& command, Commands& commands, LoadOptions& options) {
    AddDatabase(command, commands, options.database);
    command.add_option("SOURCE", options.sources, kSourceHelp)->required();
    AddMap(command, options.map);
    command.add_option("--report", options.report, "file to write a report to (JSON)");
    command.add_option("--html", options.html, "file to write a report for people to (HTML)");
    AddRecordOptions(command, options);
    command.add_option("--trace", options.trace, "file to write the importer's traces to");
    command.add_option("--max-rejects", options.maxRejects,
                       "stop when more records than this are rejected");
    command.add_flag("--retry-rejected", options.retryRejected,
                     "try again what earlier loads of the same sources rejected");
    command.add_flag("--whole-packets", options.wholePackets,
                     "hand each packet to the importer as it stands, all or nothing");
    command.add_flag("--fresh", options.fresh, "ignore what the journal knows as loaded");
    command.add_flag("--quiet", options.quiet, "show errors only");
    AddLimits(command, options.limits);
}

void AddRetryFor(CLI::App& command, LoadOptions& options) {
    command
        .add_option_function<int>(
            "--retry-for",
            [&options](int seconds) { options.retryFor = std::chrono::seconds(seconds); },
            "seconds for which a lost connection to a server is sought again; 0: it ends the load")
        ->check(CLI::Range(0, kLongestRetry))
        ->type_name("SECONDS")
        ->default_str(std::to_string(options.retryFor.count()));
}

void AddWorkers(CLI::App& command, std::size_t& workers, const std::string& what,
                const std::string& otherwise) {
    workers = 0;
    command.add_option("--workers", workers, what)
        ->check(CLI::Range(std::size_t{1}, kMostWorkers))
        ->default_str(
            fmt::format("a processor each, up to {}; {}", kMostWorkersByDefault, otherwise));
}

void AddLoadWorkers(CLI::App& command, LoadOptions& options) {
    AddWorkers(command, options.workers,
               "threads that go through records ahead of their turn, on a server; 1: none does. "
               "What comes out does not depend on how many",
               "1 where only one can be");
}

void AddCheck(CLI::App& app, Commands& commands) {
    CLI::App* check = app.add_subcommand(
        "check", "Rehearse a load, keep nothing, and tell what it would reject or lose");
    AddImportOptions(*check, commands, commands.check);
    AddLoadWorkers(*check, commands.check);
    check->callback([&commands] {
        commands.run = [&commands] { return RunCheck(commands.check, commands.out, commands.err); };
    });
}

void AddLoad(CLI::App& app, Commands& commands) {
    CLI::App* load = app.add_subcommand("load", "Import packets");
    AddImportOptions(*load, commands, commands.load);
    load->add_option("--rejects", commands.load.rejects, "folder to set rejected records aside in");
    load->add_option("--rejected-rows", commands.load.rejectedRows,
                     "file to write the rows of rejected records to, as they stood (with --map)");
    AddRetryFor(*load, commands.load);
    // For tests, so that few records are many groups; an empty group keeps it out of the help.
    load->add_option("--group-records", commands.load.groupRecords)
        ->check(CLI::Range(std::size_t{1}, kGroupRecords))
        ->group("");
    AddLoadWorkers(*load, commands.load);
    load->callback([&commands] {
        commands.run = [&commands] { return RunLoad(commands.load, commands.out, commands.err); };
    });
}

void AddVerify(CLI::App& app, Commands& commands) {
    CLI::App* verify = app.add_subcommand("verify", "Compare packets with what is in the database");
    VerifyOptions& options = commands.verify;
    AddDatabase(*verify, commands, options.database);
    verify->add_option("SOURCE", options.sources, kSourceHelp)->required();
    AddMap(*verify, options.map);
    AddRecordOptions(*verify, options);
    verify->add_option("--report", options.report, "file to write a report to (JSON)");
    verify->add_option("--html", options.html, "file to write a report for people to (HTML)");
    verify->add_flag("--exact", options.exact,
                     "report what the database holds and no source speaks of as a difference, too");
    AddWorkers(
        *verify, options.workers,
        "threads that compare records, a connection each; 1: none besides the main one. What "
        "comes out does not depend on how many",
        "1 for sources of less than a mebibyte");
    AddImmutable(*verify, options);
    verify->add_flag("--quiet", options.quiet, "show differences only");
    AddLimits(*verify, options.limits);
    verify->callback([&commands] {
        commands.run = [&commands] {
            return RunVerify(commands.verify, commands.out, commands.err);
        };
    });
}

void AddShow(CLI::App& app, Commands& commands) {
    CLI::App* show = app.add_subcommand(
        "show", "Show record types and counts, the records of a type, or one record");
    ShowOptions& options = commands.show;
    AddDatabase(*show, commands, options.database);
    show->add_option("TYPE", options.type, "a record type");
    show->add_option("ID", options.id, "a record's display id, unique key or dbid");
    AddImmutable(*show, options);
    show->callback([&commands] {
        commands.run = [&commands] {
            RunShow(commands.show, commands.out);
            return static_cast<int>(ExitCode::Success);
        };
    });
}

void AddSurvey(CLI::App& app, Commands& commands) {
    CLI::App* survey = app.add_subcommand(
        "survey", "Look at CSV and JSON files before there is a map or a schema for them");
    SurveyRequest& request = commands.survey;
    survey
        ->add_option("SOURCE", request.sources,
                     "files, folders of files (*.csv, *.tsv, *.jsonl, *.ndjson, *.json, in all "
                     "folders below, too), or - for standard input")
        ->required();
    survey
        ->add_option("--format", request.format,
                     "format of the files that are named, whatever their endings")
        ->check(CLI::IsMember({"csv", "jsonl", "json"}));
    survey->add_option("--separator", request.separator,
                       "what stands between the cells of CSV files, instead of a guess");
    survey->add_option("--encoding", request.encoding,
                       "in what CSV files are written, instead of a guess");
    survey->add_option("--report", request.report, "file to write a report to (JSON)");
    survey->add_option("--html", request.html, "file to write a page for people to (HTML)");
    survey->add_option("--write-schema", request.writeSchema,
                       "new file to write a draft of a schema file to (YAML)");
    survey->add_option("--write-map", request.writeMap,
                       "new file to write a draft of a map to (YAML)");
    survey->callback([&commands] {
        commands.run = [&commands] {
            RunSurvey(commands.survey, commands.out);
            return static_cast<int>(ExitCode::Success);
        };
    });
}

// The parser's messages can have several lines, and repeat what was on the command line.
std::string VisibleComplaint(const std::string& text) {
    std::string out;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        out += VisibleText(WithoutPasswords(line)) + '\n';
    }
    return out;
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App app("Moves tracker data from XML packets into a record database.", "ztimport");
    app.require_subcommand(1);
    app.set_version_flag("--version", VersionText());
    Commands commands{out, err, {}, {}, {}, "plain", {}, {}, {}, {}, {}, {}};
    AddInit(app, commands);
    AddLoad(app, commands);
    AddCheck(app, commands);
    AddVerify(app, commands);
    AddShow(app, commands);
    AddSurvey(app, commands);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream complaint;
        const int code = app.exit(error, out, complaint);
        err << VisibleComplaint(complaint.str());
        return static_cast<int>(code == 0 ? ExitCode::Success : ExitCode::BadInput);
    }
    for (std::string* const database :
         {&commands.database, &commands.load.database, &commands.check.database,
          &commands.show.database, &commands.verify.database}) {
        *database = InSchema(*database, commands.serverSchema);
    }
    return commands.run();
}

}  // namespace tool
