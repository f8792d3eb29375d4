#include <exception>
#include <iostream>
#include <new>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/foundation/cexception.h"
#include "recorddb/errors.h"
#include "tool/commands/command_line.h"
#include "tool/commands/database_failure.h"
#include "tool/io/source_error.h"
#include "tool/io/standard_output.h"
#include "tool/io/write_error.h"
#include "tool/packet/exception_text.h"
#include "tool/process/exit_code.h"
#include "tool/process/interrupt.h"
#include "tool/process/memory_watch.h"
#include "tool/process/usage_error.h"
#include "tool/process/wait_to_read.h"
#include "tool/text/masked_password.h"
#include "tool/text/visible_text.h"

namespace {

int Fail(const std::string& text, tool::ExitCode code) {
    std::cerr << "ztimport: " << tool::VisibleLines(tool::WithoutPasswords(text)) << '\n';
    return static_cast<int>(code);
}

constexpr std::string_view kMakeRoom =
    "; make room, then start the same command again: it goes on where this one stopped";

bool MeansNoRoom(const std::error_code& code) {
    return code == std::errc::no_space_on_device || code == std::errc::file_too_large ||
           code == std::errc::io_error;
}

// The one place that turns an exception into words and an exit code.
int FailWithCurrentException() {
    try {
        throw;
    } catch (const tool::UsageError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const tool::SourceError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const tool::InterruptedWait& error) {
        Fail(error.what(), tool::ExitCode::BadInput);
        return 128 + tool::Interrupted();
    } catch (const recorddb::schema::SchemaError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const recorddb::DatabaseError& error) {
        using Problem = recorddb::DatabaseError::Problem;
        const bool cannotBeMade = error.GetProblem() == Problem::FileExists ||
                                  error.GetProblem() == Problem::TooManyColumns;
        return Fail(error.what(),
                    cannotBeMade ? tool::ExitCode::BadInput : tool::ExitCode::DatabaseFailed);
    } catch (const recorddb::sql::Error& error) {
        return Fail(tool::ExplainFailure(error), tool::ExitCode::DatabaseFailed);
    } catch (CException* exception) {
        return Fail(tool::TakeText(exception), tool::ExitCode::DatabaseFailed);
    } catch (const tool::MemoryError& error) {
        return Fail(error.what(), tool::ExitCode::DatabaseFailed);
    } catch (const std::bad_alloc&) {
        // Says it without asking for memory.
        std::cerr << "ztimport: there is not enough memory; make some free, or reject long records "
                     "with --max-record-size, then start the same command again\n";
        return static_cast<int>(tool::ExitCode::DatabaseFailed);
    } catch (const tool::WriteError& error) {
        return Fail(error.what() + std::string(MeansNoRoom(error.code()) ? kMakeRoom : ""),
                    tool::ExitCode::DatabaseFailed);
    } catch (const std::system_error& error) {
        return MeansNoRoom(error.code())
                   ? Fail(error.what() + std::string(kMakeRoom), tool::ExitCode::DatabaseFailed)
                   : Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const std::exception& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    }
}

// Flushes what the command had to show before it failed. Called when the failure itself has been
// reported.
void FlushAfterFailure(std::ostream& out) {
    if (!out) {
        return;
    }
    try {
        out.flush();
    } catch (const tool::WriteError& error) {
        Fail(error.what(), tool::ExitCode::DatabaseFailed);
    }
}

// Runs before the constructors of global objects, those of shared libraries included, which ask for
// memory as well.
void BeforeConstructors(int /*argc*/, char** /*argv*/, char** /*environment*/) {
    tool::WatchMemory();
}
[[gnu::section(".preinit_array"), gnu::used]] void (*const kPreinit)(int, char**,
                                                                     char**) = BeforeConstructors;

}  // namespace

int main(int argc, char** argv) {
    tool::OccupyStandardDescriptors();
    tool::StandardOutput out;
    try {
        const int code = tool::RunCommandLine(argc, argv, out, std::cerr);
        out.flush();
        return code;
    } catch (...) {
        const int code = FailWithCurrentException();
        FlushAfterFailure(out);
        return code;
    }
}
