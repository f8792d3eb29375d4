#include "tool/commands/database_failure.h"

#include <string_view>

namespace tool {

namespace {

using recorddb::sql::ErrorKind;

// True of every command: what was made permanent is kept, and noted in the journal.
constexpr std::string_view kGoOn =
    "then start the same command again: it goes on where this one stopped";

std::string Failed(const std::string& cause, std::string_view advice) {
    return "the database failed: " + cause + "; " + std::string(advice) + ", " + std::string(kGoOn);
}

}  // namespace

std::string ExplainFailure(const recorddb::sql::Error& error) {
    const std::string& cause = error.DriverText();
    switch (error.Kind()) {
        case ErrorKind::Busy:
            return Failed(cause,
                          "another program is writing to it; wait until it is done, or close it");
        case ErrorKind::Conflict:
            return Failed(cause, "close it");
        case ErrorKind::DiskFull:
            return Failed(cause, "make room on the disk that it is on");
        case ErrorKind::Io:
            return Failed(cause, "see that its disk is sound, has room and lets files grow");
        case ErrorKind::Corrupt:
            return "the database is damaged: " + cause +
                   "; restore it from a copy, or make a new one and load it again";
        case ErrorKind::NotADatabase:
            return cause + "; name a database that \"ztimport init\" has made";
        case ErrorKind::ReadOnly:
            return cause +
                   "; it takes the permission to write to the file and to its directory, or a "
                   "server that takes changes";
        case ErrorKind::ConnectionLost:
            return Failed(cause, "see that the server runs and can be reached");
        case ErrorKind::CannotOpen:
        case ErrorKind::PermissionDenied:
            return cause;
        case ErrorKind::Unsupported:
            return error.Sql().empty() ? cause : error.what();
        default:
            return error.what();
    }
}

}  // namespace tool
