#include "recorddb/database.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/session.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/sql.h"
#include "recorddb/store/search_indexes.h"
#include "recorddb/store/stored_schema.h"

namespace recorddb {

namespace {

[[noreturn]] void RefuseExisting(const std::string& location) {
    throw DatabaseError(DatabaseError::Problem::FileExists,
                        location + ": the file exists already; a database is made in a new file");
}

// The engine only says that it cannot open a file, and the file is one that nobody has named.
void CheckDirectory(const std::string& location) {
    const auto directory = std::filesystem::absolute(location).parent_path();
    std::error_code ignored;
    if (!std::filesystem::is_directory(directory, ignored)) {
        throw sql::Error(sql::ErrorKind::CannotOpen,
                         fmt::format("{}: there is no directory {}; make it first", location,
                                     directory.string()),
                         "");
    }
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        throw sql::Error(sql::ErrorKind::ReadOnly,
                         fmt::format("{}: nothing can be written to the directory {}", location,
                                     directory.string()),
                         "");
    }
}

// The file in which a database is made, beside its final place. Removed with what the engine may
// have put next to it, whatever happens.
class WorkFile {
  public:
    explicit WorkFile(const std::string& location)
        : m_path(fmt::format("{}.new-{}", location, getpid())) {}
    WorkFile(const WorkFile&) = delete;
    WorkFile& operator=(const WorkFile&) = delete;
    ~WorkFile() {
        for (const char* const suffix : {"", "-wal", "-shm", "-journal"}) {
            std::error_code ignored;
            std::filesystem::remove(m_path + suffix, ignored);
        }
    }

    const std::string& Path() const { return m_path; }

    // Gives the finished file its name. A link, unlike a rename, never replaces a file that has
    // come into being meanwhile.
    void MoveTo(const std::string& location) const {
        if (link(m_path.c_str(), location.c_str()) == 0) {
            return;
        }
        if (errno == EEXIST) {
            RefuseExisting(location);
        }
        // Not every file system has links.
        std::error_code error;
        std::filesystem::rename(m_path, location, error);
        if (error) {
            throw sql::Error(sql::ErrorKind::Io, location + ": " + error.message(), "");
        }
    }

  private:
    std::string m_path;
};

sql::OpenMode OpenModeOf(Database::Mode mode) {
    switch (mode) {
        case Database::Mode::ReadOnly:
            return sql::OpenMode::ReadOnly;
        case Database::Mode::Immutable:
            return sql::OpenMode::Immutable;
        case Database::Mode::ReadWrite:
            break;
    }
    return sql::OpenMode::ReadWrite;
}

void Fill(const std::string& path, const schema::Schema& schema) {
    const auto connection = sql::Open(path, sql::OpenMode::CreateNew);
    sql::Transaction transaction(*connection);
    schema::StoreSchema(*connection, schema);
    transaction.Commit();
}

}  // namespace

void Database::Create(const std::string& location, const schema::Schema& schema) {
    if (sql::IsServerUrl(location) || location.empty()) {
        sql::Open(location, sql::OpenMode::CreateNew);
    }
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(location, ignored))) {
        RefuseExisting(location);
    }
    CheckDirectory(location);
    const WorkFile file(location);
    Fill(file.Path(), schema);
    file.MoveTo(location);
}

std::unique_ptr<Database> Database::Open(const std::string& location, Mode mode) {
    auto connection = sql::Open(location, OpenModeOf(mode));
    schema::Schema schema = schema::ReadSchema(schema::LoadSchemaText(*connection, location),
                                               location + " (stored schema)");
    schema::CheckTables(*connection, schema, location);
    return std::unique_ptr<Database>(new Database(std::move(connection), std::move(schema)));
}

Database::Database(std::unique_ptr<sql::Connection> connection, schema::Schema schema)
    : m_connection(std::move(connection)),
      m_schema(std::move(schema)),
      m_journal(*m_connection),
      m_searchIndexes(std::make_unique<schema::SearchIndexes>(*m_connection, m_schema)) {}

Database::~Database() = default;

AdPtr<Session> Database::OpenSession(const SessionOptions& options) {
    return AdPtr<Session>(new Session(
        std::make_shared<SessionParts>(*m_connection, m_schema, *m_searchIndexes, options)));
}

void Database::EnsureSearchIndex(const schema::RecordType& type, const schema::Field& field) {
    m_searchIndexes->Ensure(type, field);
}

bool Database::HasSearchIndex(const schema::RecordType& type, const schema::Field& field) {
    return m_searchIndexes->Has(type, field);
}

}  // namespace recorddb
