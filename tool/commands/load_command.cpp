#include "tool/commands/load_command.h"

#include <fmt/format.h>

#include <optional>
#include <string_view>

#include "recorddb/database.h"
#include "recorddb/session/session.h"
#include "tool/commands/database_failure.h"
#include "tool/commands/output_guard.h"
#include "tool/io/write_error.h"
#include "tool/load/load_output.h"
#include "tool/load/source_loader.h"
#include "tool/load/trace_file.h"
#include "tool/process/exit_code.h"
#include "tool/process/interrupt.h"
#include "tool/sources/source_checks.h"
#include "tool/sources/source_list.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

int ExitCodeOf(const LoadOutput& output) {
    if (const int signal = Interrupted()) {
        return 128 + signal;
    }
    const bool incomplete = output.Totals().rejected > 0 || output.LeavesRejectedBefore() ||
                            output.Losses().Count() > 0;
    return static_cast<int>(incomplete ? ExitCode::RecordsRejected : ExitCode::Success);
}

void SayWhyStopped(const LoadOptions& options, LoadOutput& output) {
    const std::string why = Interrupted() != 0
                                ? "Stopped."
                                : fmt::format("Stopped, since more than {} {} rejected.",
                                              CountOf(options.maxRejects.value_or(0), "record"),
                                              options.rehearse ? "would be" : "were");
    const std::string_view state =
        options.rehearse ? "The database is as it was before."
        : options.fresh  ? "Everything up to here is in the database; go on without --fresh."
                         : "Everything up to here is in the database; the same command goes on.";
    const std::string text = fmt::format("{} {}", why, state);
    output.NoteEarlyEnd(text);
    output.Warn(text);
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

// What ended the load is what a person must know; that the reports cannot be written either comes
// besides.
void FinishAfterFailure(LoadOutput& output) {
    try {
        output.Finish();
    } catch (const WriteError& error) {
        output.Warn(fmt::format("warning: {}", error.what()));
    }
}

void LoadSources(const SourceList& sources, SourceLoader& loader) {
    for (const Source& source : sources.Sources()) {
        loader.Load(source);
        if (loader.Stopped()) {
            return;
        }
    }
}

int LoadInto(const LoadOptions& options, const SourceList& sources, std::ostream& out,
             std::ostream& err) {
    const auto database =
        recorddb::Database::Open(options.database, recorddb::Database::Mode::ReadWrite);
    recorddb::SessionOptions sessionOptions;
    sessionOptions.attachmentsFolder = options.attachments.string();
    sessionOptions.maxAttachmentSize = options.maxAttachmentSize;
    sessionOptions.examineAttachments = options.rehearse;
    sessionOptions.references = {.maxTries = options.maxReferenceTries,
                                 .stopRequested = [] { return Interrupted() != 0; }};
    const AdPtr<recorddb::Session> session = database->OpenSession(sessionOptions);
    LoadOutput output(options, sources.TotalSize(), out, err);
    SourceLoader loader(*database, session, options, output);
    WatchInterrupts();
    try {
        LoadSources(sources, loader);
    } catch (...) {
        // What was imported and rejected before is true all the same, and the report says so.
        output.NoteEarlyEnd(TextOfCurrentException());
        FinishAfterFailure(output);
        throw;
    }
    if (loader.Stopped()) {
        SayWhyStopped(options, output);
    }
    output.Finish();
    return ExitCodeOf(output);
}

}  // namespace

int RunLoad(const LoadOptions& options, std::ostream& out, std::ostream& err) {
    RequireFolder(options.attachments);
    const SourceList sources(options.sources);
    CheckOutputs(options, sources);
    std::optional<TraceFile> trace;
    if (!options.trace.empty()) {
        trace.emplace(options.trace);
    }
    const int code = LoadInto(options, sources, out, err);
    if (trace) {
        trace->Finish();
    }
    return code;
}

}  // namespace tool
