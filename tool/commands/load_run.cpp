#include "tool/commands/load_run.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/session.h"
#include "tool/commands/command_sources.h"
#include "tool/commands/database_failure.h"
#include "tool/commands/output_guard.h"
#include "tool/html/html_load_report.h"
#include "tool/io/write_error.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/source_loader.h"
#include "tool/load/trace_file.h"
#include "tool/losses/loss_finder.h"
#include "tool/process/exit_code.h"
#include "tool/process/interrupt.h"
#include "tool/process/usage_error.h"
#include "tool/rejects/rejected_rows_sink.h"
#include "tool/rejects/rejects_sink.h"
#include "tool/sources/source_checks.h"
#include "tool/sources/source_list.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

int ExitCodeOf(const LoadSinks& sinks, const LoadPolicy& policy) {
    if (const int signal = Interrupted()) {
        return 128 + signal;
    }
    const bool incomplete = sinks.Totals().rejected > 0 || sinks.LeftRejected() > 0 ||
                            (policy.MindsLosses() && sinks.Losses() > 0);
    return static_cast<int>(incomplete ? ExitCode::Incomplete : ExitCode::Success);
}

void SayWhyStopped(const LoadOptions& options, const LoadPolicy& policy, LoadSinks& sinks) {
    const std::string why =
        Interrupted() != 0
            ? "Stopped."
            : fmt::format("Stopped, since more than {} {} rejected.",
                          CountOf(options.maxRejects.value_or(0), "record"), policy.Were());
    const std::string text = fmt::format("{} {}", why, policy.WhatStays(options));
    sinks.EndEarly(text);
    sinks.Warn(text);
}

// For the report only: the exception itself goes on to where it becomes an error.
std::string TextOfCurrentException() {
    try {
        throw;
    } catch (const recorddb::sql::Error& error) {
        return ExplainFailure(error);
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "The database failed.";
    }
}

// The error that ended the load is the one to show; that a report cannot be written either is only
// a warning.
void FinishAfterFailure(LoadSinks& sinks) {
    try {
        sinks.Finish();
    } catch (const WriteError& error) {
        sinks.Warn(fmt::format("warning: {}", error.what()));
    }
}

// The sinks of a load. The terminal is the last one, so a record that it shows as rejected has
// already been set aside.
std::vector<std::unique_ptr<LoadSink>> OpenSinks(const LoadKind& kind, const LoadOptions& options,
                                                 const CommandSources& sources, bool isRead,
                                                 std::ostream& out, std::ostream& err) {
    std::vector<std::unique_ptr<LoadSink>> sinks;
    if (!options.rejects.empty()) {
        sinks.push_back(std::make_unique<RejectsSink>(options.rejects));
    }
    if (!options.rejectedRows.empty() && isRead) {
        sinks.push_back(std::make_unique<RejectedRowsSink>(options.rejectedRows, sources.Rows()));
    }
    if (!options.report.empty()) {
        sinks.push_back(kind.openReport(options.report));
    }
    if (!options.html.empty()) {
        sinks.push_back(std::make_unique<HtmlLoadReport>(options, kind.command, kind.policy));
    }
    const std::uint64_t totalBytes = isRead ? sources.List().TotalSize() : 0;
    sinks.push_back(kind.openTerminal(options, totalBytes, out, err));
    return sinks;
}

std::vector<LoadSink*> PointersTo(const std::vector<std::unique_ptr<LoadSink>>& sinks) {
    std::vector<LoadSink*> pointers;
    pointers.reserve(sinks.size());
    for (const auto& sink : sinks) {
        pointers.push_back(sink.get());
    }
    return pointers;
}

// Tells what the reading of the sources through a map has found.
void TellFindings(const CommandSources& sources, LoadSinks& sinks) {
    for (const MapFinding& finding : sources.Findings().all) {
        sinks.Find(finding);
        if (const auto loss = LossOf(finding, sources.MapName())) {
            sinks.Lose(*loss);
        }
    }
}

// Where the rows of rejected records go.
std::vector<std::filesystem::path> RejectedRowsFiles(const LoadOptions& options,
                                                     const CommandSources& sources) {
    std::vector<std::filesystem::path> files;
    if (options.rejectedRows.empty()) {
        return files;
    }
    const std::vector<std::string> names = sources.SourceNames();
    for (const std::string& name : names) {
        files.push_back(RejectedRowsPath(options.rejectedRows, name, names.size()));
    }
    return files;
}

int LoadInto(const LoadKind& kind, const LoadOptions& options, CommandSources& sources,
             std::ostream& out, std::ostream& err) {
    const auto database =
        recorddb::Database::Open(options.database, recorddb::Database::Mode::ReadWrite);
    const AdPtr<recorddb::Session> session =
        database->OpenSession(SessionFor(options, kind.policy));
    WatchInterrupts();
    const bool isRead = sources.Open(*database, options.limits, !kind.policy.MindsLosses(),
                                     !options.rejectedRows.empty());
    const auto opened = OpenSinks(kind, options, sources, isRead, out, err);
    LoadSinks sinks(PointersTo(opened));
    SourceLoader loader(*database, session, options, kind.policy, sinks);
    TellFindings(sources, sinks);
    bool complete = false;
    try {
        complete = isRead && loader.Load(sources.List());
    } catch (...) {
        // What was imported and rejected before that remains so, and belongs into the report.
        sinks.EndEarly(TextOfCurrentException());
        FinishAfterFailure(sinks);
        throw;
    }
    if (!complete) {
        SayWhyStopped(options, kind.policy, sinks);
    }
    sinks.Finish();
    return ExitCodeOf(sinks, kind.policy);
}

}  // namespace

int RunLoadOfKind(const LoadKind& kind, const LoadOptions& options, std::ostream& out,
                  std::ostream& err) {
    RequireFolder(options.attachments);
    if (options.wholePackets && !options.map.empty()) {
        throw UsageError("--whole-packets is for packets, and a map makes records one by one");
    }
    CommandSources sources(options.sources, options.map);
    if (!options.rejectedRows.empty() && options.map.empty()) {
        throw UsageError(
            "--rejected-rows writes rows, and packets have none; add --map, or use "
            "--rejects");
    }
    CheckOutputs(options, sources.Files(), RejectedRowsFiles(options, sources));
    std::optional<TraceFile> trace;
    if (!options.trace.empty()) {
        trace.emplace(options.trace);
    }
    const int code = LoadInto(kind, options, sources, out, err);
    if (trace) {
        trace->Finish();
    }
    return code;
}

}  // namespace tool
