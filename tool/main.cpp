#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <system_error>

#include "platform/foundation/cexception.h"
#include "recorddb/database_error.h"
#include "recorddb/schema/schema_error.h"
#include "recorddb/sql/error.h"
#include "tool/command_line.h"
#include "tool/database_failure.h"
#include "tool/exception_text.h"
#include "tool/exit_code.h"
#include "tool/masked_password.h"
#include "tool/memory_watch.h"
#include "tool/source_error.h"
#include "tool/usage_error.h"
#include "tool/visible_text.h"

namespace {

int Fail(const std::string& text, tool::ExitCode code) {
    std::cerr << "ztimport: " << tool::VisibleLines(tool::WithoutPasswords(text)) << '\n';
    return static_cast<int>(code);
}

// The one place that turns an exception into words and an exit code.
int FailWithCurrentException() {
    try {
        throw;
    } catch (const tool::UsageError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const tool::SourceError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const recorddb::schema::SchemaError& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const recorddb::DatabaseError& error) {
        const bool exists = error.GetProblem() == recorddb::DatabaseError::Problem::FileExists;
        return Fail(error.what(),
                    exists ? tool::ExitCode::BadInput : tool::ExitCode::DatabaseFailed);
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
    } catch (const std::system_error& error) {
        const bool noRoom = error.code() == std::errc::no_space_on_device ||
                            error.code() == std::errc::file_too_large ||
                            error.code() == std::errc::io_error;
        return noRoom ? Fail(std::string(error.what()) +
                                 "; make room, then start the same command again: it goes on "
                                 "where this one stopped",
                             tool::ExitCode::DatabaseFailed)
                      : Fail(error.what(), tool::ExitCode::BadInput);
    } catch (const std::exception& error) {
        return Fail(error.what(), tool::ExitCode::BadInput);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        tool::WatchMemory();
        return tool::RunCommandLine(argc, argv, std::cout, std::cerr);
    } catch (...) {
        return FailWithCurrentException();
    }
}
