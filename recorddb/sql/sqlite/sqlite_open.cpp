#include <fmt/format.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql/sqlite/sqlite_connection.h"
#include "recorddb/sql/sqlite/sqlite_error.h"
#include "recorddb/sql/sqlite/sqlite_statement.h"

namespace recorddb::sql {

namespace {

// How long a writer waits for another one. Loads commit often, so the lock becomes free many times
// within this.
constexpr int kBusyTimeoutMilliseconds = 10'000;

// Set on every connection and changing nothing in the file.
//
// synchronous=NORMAL under a write-ahead log: the log is synced at checkpoints, not at every
// commit. A crash of the process loses nothing; a crash of the machine may lose the last
// transactions but never damages the file. The journal of what was loaded is written in the same
// transactions as the records, so it goes back to the same instant and a load resumes correctly.
//
// cache_size is in KiB when negative: 32 MiB, enough for the inner pages of the indexes of millions
// of records, where look-ups by source id jump about.
//
// wal_autocheckpoint is in pages: the log is copied into the file at 40 MB instead of 4. Loads
// commit often and write the same pages many times over, which then reach the file once.
constexpr const char* kSettings =
    "PRAGMA foreign_keys = ON;"
    "PRAGMA synchronous = NORMAL;"
    "PRAGMA cache_size = -32768;"
    "PRAGMA temp_store = MEMORY;"
    "PRAGMA wal_autocheckpoint = 10000;";

// The application id of databases that are made here, "ZTRD"; the `file` command shows it.
// Databases made by early versions have none, which reads as 0.
constexpr std::int64_t kApplicationId = 0x5A545244;

// For a file that is thrown away: nothing is synced and nothing can be undone. What does not fit
// the cache, sorting included, goes to disk; that is what the file is for.
constexpr const char* kScratchSettings =
    "PRAGMA synchronous = OFF;"
    "PRAGMA locking_mode = EXCLUSIVE;"
    "PRAGMA cache_size = -4096;"
    "PRAGMA temp_store = FILE;";

void Execute(sqlite3* handle, const char* sql) {
    CheckSqlite(handle, sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), sql);
}

// A file from elsewhere can hold more than data. Nothing in it is run, and nothing damaged or
// oversized in it is trusted. To be called before anything of the file is read.
void Distrust(sqlite3* handle) {
    for (const auto& [option, value] :
         {std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1), std::pair(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0),
          std::pair(SQLITE_DBCONFIG_ENABLE_TRIGGER, 0), std::pair(SQLITE_DBCONFIG_ENABLE_VIEW, 0),
          std::pair(SQLITE_DBCONFIG_DQS_DDL, 0), std::pair(SQLITE_DBCONFIG_DQS_DML, 0)}) {
        CheckSqlite(handle, sqlite3_db_config(handle, option, value, nullptr), "");
    }
    // Far above what the tables of a schema need, far below what the engine would accept.
    constexpr int longestStatement = 1'000'000;
    sqlite3_limit(handle, SQLITE_LIMIT_SQL_LENGTH, longestStatement);
    sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(handle, SQLITE_LIMIT_TRIGGER_DEPTH, 1);
    Execute(handle, "PRAGMA cell_size_check = ON");
}

std::int64_t ApplicationId(sqlite3* handle) {
    SqliteStatement statement(handle, "PRAGMA application_id");
    return QueryInt(statement).value();
}

// Opening alone reads nothing; this makes a file that is no database fail here and not later.
void ReadHeader(sqlite3* handle) {
    Execute(handle, "SELECT count(*) FROM sqlite_master");
    if (const std::int64_t id = ApplicationId(handle); id != 0 && id != kApplicationId) {
        throw Error(
            ErrorKind::NotADatabase,
            fmt::format("it is a database of another program (its application id is {})", id), "");
    }
}

[[noreturn]] void CannotOpen(const std::string& path, const std::string& why) {
    throw Error(ErrorKind::CannotOpen, path + ": " + why, "");
}

// A path that the engine takes for nothing else: to it, ":memory:" means a database without a file,
// and "file:" may begin a URI.
std::string PlainPath(const std::string& path) {
    return path[0] == '/' ? path : "./" + path;
}

// The path of the file itself. The engine keeps its side files there and not beside a link, so they
// are looked for there.
std::string WithoutLinks(const std::string& path) {
    std::error_code error;
    std::string resolved = std::filesystem::canonical(path, error).string();
    if (error) {
        CannotOpen(path, error.message());
    }
    return resolved;
}

// The log or the journal beside a database that has something in it, or cannot be looked at;
// empty when neither has.
std::string SideFile(const std::string& path) {
    for (const char* const suffix : {"-wal", "-journal"}) {
        std::error_code error;
        const auto size = std::filesystem::file_size(path + suffix, error);
        if (error ? error != std::errc::no_such_file_or_directory : size > 0) {
            return path + suffix;
        }
    }
    return "";
}

std::string UriOf(const std::string& path) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char character : std::filesystem::absolute(path).string()) {
        if (character == '%' || character == '?' || character == '#') {
            const auto code = static_cast<unsigned char>(character);
            uri += '%';
            uri += hex[code >> 4U];
            uri += hex[code & 0xFU];
        } else {
            uri += character;
        }
    }
    return uri;
}

// The engine counts all its memory under a lock of the whole process, for a figure that nobody here
// asks for. It can be told not to only before its first use; in a program that has used it already,
// it goes on counting.
void DoWithoutMemoryStatistics() {
    [[maybe_unused]] static const int kConfigured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

// The log stands beside one name of the file. Who opens the file by another name would not see it,
// and two programs that write by two names would destroy the database.
void CheckNames(const std::string& path) {
    std::error_code ignored;
    const auto names = std::filesystem::hard_link_count(path, ignored);
    if (!ignored && names > 1) {
        CannotOpen(path, fmt::format("the file has {} names (hard links), and a log beside another "
                                     "one of them would be missed; copy it, or remove the others",
                                     names));
    }
}

void CheckPath(const std::string& path, OpenMode mode) {
    if (path.empty()) {
        CannotOpen("\"\"", "a database needs the path of a file");
    }
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    const bool exists = std::filesystem::exists(status);
    if (mode == OpenMode::CreateNew) {
        if (exists) {
            CannotOpen(path, "the file exists already");
        }
    } else if (!exists) {
        CannotOpen(path, "there is no such file; check the path, or make the database first");
    } else if (std::filesystem::is_directory(status)) {
        CannotOpen(path, "it is a directory, not a file");
    } else if (!std::filesystem::is_regular_file(status)) {
        CannotOpen(path, "it is a pipe or a device, not a file");
    } else if (mode != OpenMode::Immutable) {
        CheckNames(path);
    }
}

}  // namespace

SqliteConnection::Handle SqliteConnection::OpenHandle(const std::string& path, int flags) {
    DoWithoutMemoryStatistics();
    sqlite3* raw = nullptr;
    // NOMUTEX: a connection belongs to one thread.
    const int code = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    Handle handle(raw);
    CheckSqlite(raw, code, "");
    sqlite3_extended_result_codes(raw, 1);
    sqlite3_busy_timeout(raw, kBusyTimeoutMilliseconds);
    return handle;
}

// A reader of a write-ahead log shares an index file beside the database with its writers. Where
// that file cannot be made, nothing tells whether someone writes: whoever can write there may do so
// at any time. So the database file alone is read only when the user says that nobody writes.
SqliteConnection::Handle SqliteConnection::OpenReadOnly(const std::string& path) {
    Handle handle = OpenHandle(PlainPath(path), SQLITE_OPEN_READONLY);
    Distrust(handle.get());
    try {
        ReadHeader(handle.get());
    } catch (const Error& error) {
        // Which of these two errors it is depends on whether the database file itself may be
        // written to.
        if (error.Kind() != ErrorKind::CannotOpen && error.Kind() != ErrorKind::ReadOnly) {
            throw;
        }
        const std::string log = SideFile(path);
        throw Error(
            ErrorKind::CannotOpen,
            fmt::format("reading it takes the permission to write to its directory {}, where "
                        "readers and writers keep a file in common; get that permission, or {}",
                        std::filesystem::path(path).parent_path().string(),
                        log.empty() ? "read it with --immutable if certainly no program writes to "
                                      "it meanwhile"
                                    : "copy the database together with " + log +
                                          ", which holds a part of it, and read the copy"),
            "");
    }
    return handle;
}

SqliteConnection::Handle SqliteConnection::OpenImmutable(const std::string& path) {
    if (const std::string log = SideFile(path); !log.empty()) {
        throw Error(ErrorKind::CannotOpen,
                    "a part of the database may stand in " + log +
                        ", which reading it as immutable would leave out; read it without "
                        "--immutable, or copy both files and read the copy",
                    "");
    }
    Handle handle =
        OpenHandle(UriOf(path) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    Distrust(handle.get());
    ReadHeader(handle.get());
    return handle;
}

SqliteConnection::Handle SqliteConnection::OpenReadWrite(const std::string& path, bool create) {
    Handle handle =
        OpenHandle(PlainPath(path), SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0));
    // The engine quietly falls back to reading where it may not write.
    if (sqlite3_db_readonly(handle.get(), "main") != 0) {
        throw Error(ErrorKind::ReadOnly, "the file may not be written to", "");
    }
    Distrust(handle.get());
    ReadHeader(handle.get());
    if (create) {
        // Stored in the file, so they hold for every later connection.
        Execute(handle.get(), fmt::format("PRAGMA application_id = {}", kApplicationId).c_str());
        Execute(handle.get(), "PRAGMA journal_mode = WAL");
    }
    return handle;
}

SqliteConnection::Handle SqliteConnection::OpenInMode(const std::string& file, OpenMode mode) {
    switch (mode) {
        case OpenMode::ReadOnly:
            return OpenReadOnly(file);
        case OpenMode::Immutable:
            return OpenImmutable(file);
        case OpenMode::ReadWrite:
            return OpenReadWrite(file, false);
        case OpenMode::CreateNew:
            break;
    }
    return OpenReadWrite(file, true);
}

std::unique_ptr<Connection> SqliteConnection::Open(const std::string& path, OpenMode mode) {
    CheckPath(path, mode);
    const std::string file = mode == OpenMode::CreateNew ? path : WithoutLinks(path);
    try {
        Handle handle = OpenInMode(file, mode);
        Execute(handle.get(), kSettings);
        return std::unique_ptr<Connection>(new SqliteConnection(std::move(handle), mode));
    } catch (const Error& error) {
        throw Error(error.Kind(), path + ": " + error.DriverText(), error.Sql());
    }
}

std::vector<std::string> SqliteConnection::SideFiles(const std::string& path) {
    return {path + "-wal", path + "-shm", path + "-journal"};
}

std::unique_ptr<Connection> SqliteConnection::OpenScratch(Undoing undoing) {
    // The engine's name for a database in a temporary file that only this connection knows.
    Handle handle = OpenHandle("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    Execute(handle.get(), kScratchSettings);
    if (undoing == Undoing::Impossible) {
        Execute(handle.get(), "PRAGMA journal_mode = OFF");
    }
    return std::unique_ptr<Connection>(
        new SqliteConnection(std::move(handle), OpenMode::ReadWrite));
}

}  // namespace recorddb::sql
