#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <utility>

#include "recorddb/sql/error.h"
#include "recorddb/sql/sqlite/sqlite_connection.h"
#include "recorddb/sql/sqlite/sqlite_error.h"

namespace recorddb::sql {

namespace {

// How long a writer waits for another one. Loads commit every few hundred records, so the lock
// comes free many times within this.
constexpr int busyTimeoutMilliseconds = 10'000;

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
constexpr const char* settings =
    "PRAGMA foreign_keys = ON;"
    "PRAGMA synchronous = NORMAL;"
    "PRAGMA cache_size = -32768;"
    "PRAGMA temp_store = MEMORY;"
    "PRAGMA wal_autocheckpoint = 10000;"
    "PRAGMA trusted_schema = OFF;";

// For a file that is thrown away: nothing is synced and nothing can be undone. What does not fit
// the cache, sorting included, goes to disk; that is what the file is for.
constexpr const char* scratchSettings =
    "PRAGMA journal_mode = OFF;"
    "PRAGMA synchronous = OFF;"
    "PRAGMA locking_mode = EXCLUSIVE;"
    "PRAGMA cache_size = -4096;"
    "PRAGMA temp_store = FILE;";

void Execute(sqlite3* handle, const char* sql) {
    CheckSqlite(handle, sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), sql);
}

// Opening alone reads nothing; this makes a file that is no database fail here and not later.
void ReadHeader(sqlite3* handle) {
    Execute(handle, "SELECT count(*) FROM sqlite_master");
}

[[noreturn]] void CannotOpen(const std::string& path, const std::string& why) {
    throw Error(ErrorKind::CannotOpen, path + ": " + why, "");
}

// A path as the engine takes it: "" and ":memory:" mean databases without a file to it.
std::string PlainPath(const std::string& path) {
    return path[0] == ':' ? "./" + path : path;
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
// asks for. It can be told to leave that only before it is first used; a program that has used it
// already keeps the counting.
void DoWithoutMemoryStatistics() {
    [[maybe_unused]] static const int configured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
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
    sqlite3_busy_timeout(raw, busyTimeoutMilliseconds);
    return handle;
}

// A reader of a write-ahead log shares an index file beside the database with its writers. Where
// that file cannot be made, in a directory without write permission, there can be no writer either,
// and if there is no log the database file alone is complete and can be read as it stands.
SqliteConnection::Handle SqliteConnection::OpenReadOnly(const std::string& path) {
    Handle handle = OpenHandle(PlainPath(path), SQLITE_OPEN_READONLY);
    try {
        ReadHeader(handle.get());
    } catch (const Error& error) {
        // Which of the two it is depends on whether the database file itself may be written to.
        const bool noIndexFile =
            error.Kind() == ErrorKind::CannotOpen || error.Kind() == ErrorKind::ReadOnly;
        if (!noIndexFile || std::filesystem::exists(path + "-wal")) {
            throw;
        }
        handle = OpenHandle(UriOf(path) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
        ReadHeader(handle.get());
    }
    return handle;
}

SqliteConnection::Handle SqliteConnection::OpenReadWrite(const std::string& path, bool create) {
    Handle handle =
        OpenHandle(PlainPath(path), SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0));
    // The engine quietly falls back to reading where it may not write.
    if (sqlite3_db_readonly(handle.get(), "main") != 0) {
        throw Error(ErrorKind::ReadOnly, "the file may not be written to", "");
    }
    ReadHeader(handle.get());
    if (create) {
        // Stored in the file, so it holds for every later connection.
        Execute(handle.get(), "PRAGMA journal_mode = WAL");
    }
    return handle;
}

std::unique_ptr<Connection> SqliteConnection::Open(const std::string& path, OpenMode mode) {
    CheckPath(path, mode);
    try {
        Handle handle = mode == OpenMode::ReadOnly
                            ? OpenReadOnly(path)
                            : OpenReadWrite(path, mode == OpenMode::CreateNew);
        Execute(handle.get(), settings);
        return std::unique_ptr<Connection>(new SqliteConnection(std::move(handle), mode));
    } catch (const Error& error) {
        const bool foreign = error.Kind() == ErrorKind::NotADatabase;
        throw Error(
            error.Kind(),
            path + ": " + (foreign ? "the file is not an SQLite database" : error.DriverText()),
            error.Sql());
    }
}

std::unique_ptr<Connection> SqliteConnection::OpenScratch() {
    // The engine's name for a database in a temporary file that only this connection knows.
    Handle handle = OpenHandle("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    Execute(handle.get(), scratchSettings);
    return std::unique_ptr<Connection>(
        new SqliteConnection(std::move(handle), OpenMode::ReadWrite));
}

}  // namespace recorddb::sql
