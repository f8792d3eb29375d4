#include "tool/command_line.h"

#include <CLI/CLI.hpp>
#include <functional>

#include "tool/commands/init_command.h"
#include "tool/commands/load_command.h"
#include "tool/commands/show_command.h"
#include "tool/commands/verify_command.h"
#include "tool/exit_code.h"

namespace tool {

namespace {

// A command's options live as long as its parser, which fills them.
struct Commands {
    std::ostream& out;
    std::ostream& err;
    std::function<int()> run;

    std::string database;
    std::string schema;
    LoadOptions load;
    ShowOptions show;
    VerifyOptions verify;
};

constexpr const char* kDatabaseHelp = "the database: the path of an SQLite file";
constexpr const char* kSourceHelp =
    "packet files, folders of packet files (*.xml in name order), or - for standard input";

void AddInit(CLI::App& app, Commands& commands) {
    CLI::App* init = app.add_subcommand("init", "Create a record database");
    init->add_option("DATABASE", commands.database, kDatabaseHelp)->required();
    init->add_option("SCHEMA", commands.schema, "the schema file (YAML)")->required();
    init->callback([&commands] {
        commands.run = [&commands] {
            RunInit(commands.database, commands.schema, commands.out);
            return static_cast<int>(ExitCode::Success);
        };
    });
}

void AddLoad(CLI::App& app, Commands& commands) {
    CLI::App* load = app.add_subcommand("load", "Import packets");
    LoadOptions& options = commands.load;
    load->add_option("DATABASE", options.database, kDatabaseHelp)->required();
    load->add_option("SOURCE", options.sources, kSourceHelp)->required();
    load->add_option("--rejects", options.rejects, "folder to set rejected records aside in");
    load->add_option("--report", options.report, "file to write a report to (JSON)");
    load->add_option("--html", options.html, "file to write a report for people to (HTML)");
    load->add_option("--attachments", options.attachments,
                     "folder that attachments' file names start from and cannot leave");
    load->add_option("--trace", options.trace, "file to write the importer's traces to");
    load->add_option("--max-rejects", options.maxRejects,
                     "stop when more records than this are rejected");
    load->add_flag("--retry-rejected", options.retryRejected,
                   "try again what earlier loads of the same sources rejected");
    load->add_flag("--whole-packets", options.wholePackets,
                   "hand each packet to the importer as it stands, all or nothing");
    load->add_flag("--fresh", options.fresh, "ignore what the journal knows as loaded");
    load->add_flag("--quiet", options.quiet, "show errors only");
    load->callback([&commands] {
        commands.run = [&commands] { return RunLoad(commands.load, commands.out, commands.err); };
    });
}

void AddVerify(CLI::App& app, Commands& commands) {
    CLI::App* verify = app.add_subcommand("verify", "Compare packets with what is in the database");
    VerifyOptions& options = commands.verify;
    verify->add_option("DATABASE", options.database, kDatabaseHelp)->required();
    verify->add_option("SOURCE", options.sources, kSourceHelp)->required();
    verify->add_option("--attachments", options.attachments,
                       "folder that attachments' file names start from and cannot leave");
    verify->add_option("--report", options.report, "file to write a report to (JSON)");
    verify->add_flag("--quiet", options.quiet, "show differences only");
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
    show->add_option("DATABASE", options.database, kDatabaseHelp)->required();
    show->add_option("TYPE", options.type, "a record type");
    show->add_option("ID", options.id, "a record's display id, unique key or dbid");
    show->callback([&commands] {
        commands.run = [&commands] {
            RunShow(commands.show, commands.out);
            return static_cast<int>(ExitCode::Success);
        };
    });
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App app("Moves tracker data from XML packets into a record database.", "ztimport");
    app.require_subcommand(1);
    app.set_version_flag("--version", "ztimport " ZT_VERSION);
    Commands commands{out, err, {}, {}, {}, {}, {}, {}};
    AddInit(app, commands);
    AddLoad(app, commands);
    AddVerify(app, commands);
    AddShow(app, commands);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error, out, err);
        return static_cast<int>(code == 0 ? ExitCode::Success : ExitCode::BadInput);
    }
    return commands.run();
}

}  // namespace tool
