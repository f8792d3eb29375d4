#include "recorddb/database.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/session.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/tables/search_indexes.h"
#include "recorddb/store/tables/stored_schema.h"
#include "recorddb/store/tables/table_layout.h"

namespace recorddb {

namespace {

[[noreturn]] void RefuseExisting(const std::string& location) {
    throw DatabaseError(DatabaseError::Problem::FileExists,
                        location + ": the file exists already; a database is made in a new file");
}

// Without this check, the engine would complain of the temporary file that a database is made in, a
// name that means nothing to the user.
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

// The folder in which a database is made, beside its final place. It is new and belongs to this
// process alone, so all that is in it can be removed, whatever files the engine makes.
class WorkFolder {
  public:
    explicit WorkFolder(const std::string& location) : m_path(location + ".new-XXXXXX") {
        if (mkdtemp(m_path.data()) == nullptr) {
            throw sql::Error(sql::ErrorKind::CannotOpen,
                             fmt::format("{}: a folder to make it in cannot be made: {}", location,
                                         std::generic_category().message(errno)),
                             "");
        }
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string File() const { return m_path + "/database"; }

    // Gives the finished file its name, unless a file of that name has come into being meanwhile.
    void MoveFileTo(const std::string& location) const {
        CheckThatAllIsInTheFile(location);
        if (renameat2(AT_FDCWD, File().c_str(), AT_FDCWD, location.c_str(), RENAME_NOREPLACE) ==
            0) {
            return;
        }
        // Not every file system knows such a rename; a link does not replace anything either.
        if (errno == EINVAL && link(File().c_str(), location.c_str()) == 0) {
            unlink(File().c_str());
            return;
        }
        if (errno == EEXIST) {
            RefuseExisting(location);
        }
        throw sql::Error(sql::ErrorKind::Io,
                         location + ": " + std::generic_category().message(errno), "");
    }

  private:
    // An engine that could not end its work keeps a part of the database beside the file.
    void CheckThatAllIsInTheFile(const std::string& location) const {
        for (const auto& entry : std::filesystem::directory_iterator(m_path)) {
            if (entry.path() != File()) {
                throw sql::Error(sql::ErrorKind::Io,
                                 fmt::format("{}: the database could not be written whole to one "
                                             "file; is the disk full?",
                                             location),
                                 "");
            }
        }
    }

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

void CreateFile(const std::string& path, const schema::Schema& schema) {
    if (path.empty()) {
        sql::Open(path, sql::OpenMode::CreateNew);
    }
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) {
        RefuseExisting(path);
    }
    CheckDirectory(path);
    const WorkFolder folder(path);
    {
        const auto connection = sql::Open(folder.File(), sql::OpenMode::CreateNew);
        sql::Transaction transaction(*connection);
        schema::StoreSchema(*connection, schema);
        transaction.Commit();
    }
    folder.MoveFileTo(path);
}

// On a server there is nothing to be moved into its place: a transaction makes all of it or
// nothing.
void CreateOnServer(const std::string& url, const schema::Schema& schema, Layout layout) {
    const auto connection = sql::Open(url, sql::OpenMode::CreateNew);
    sql::Transaction transaction(*connection);
    schema::CheckRoom(*connection, schema, layout, sql::ShownLocation(url));
    schema::StoreSchema(*connection, schema, layout);
    transaction.Commit();
}

}  // namespace

void Database::Create(const std::string& location, const schema::Schema& schema, Layout layout) {
    if (sql::IsServerUrl(location)) {
        CreateOnServer(location, schema, layout);
    } else if (layout == Layout::Sharded) {
        throw sql::Error(sql::ErrorKind::Unsupported,
                         location +
                             ": the sharded layout is for databases on servers; a file "
                             "stands on one machine and has the plain one",
                         "");
    } else {
        CreateFile(location, schema);
    }
}

std::unique_ptr<Database> Database::Open(const std::string& location, Mode mode) {
    auto connection = sql::Open(location, OpenModeOf(mode));
    const std::string shown = sql::ShownLocation(location);
    const schema::StoredSchema stored = schema::LoadStoredSchema(*connection, shown);
    schema::Schema schema = schema::ReadSchema(stored.text, shown + " (stored schema)");
    if (stored.layout == Layout::Sharded) {
        connection->ExpectSpreadTables(kTakeTurnSql);
    }
    schema::CheckTables(*connection, schema, stored.layout, shown);
    return std::unique_ptr<Database>(
        new Database(std::move(connection), std::move(schema), stored.layout, shown));
}

Database::Database(std::unique_ptr<sql::Connection> connection, schema::Schema schema,
                   Layout layout, std::string location)
    : m_connection(std::move(connection)),
      m_schema(std::move(schema)),
      m_layout(layout),
      m_location(std::move(location)),
      m_journal(*m_connection),
      m_searchIndexes(std::make_unique<schema::SearchIndexes>(*m_connection, m_schema)),
      m_batch(std::make_unique<WriteBatch>(*m_connection, m_schema, layout)) {}

Database::~Database() = default;

void Database::Reconnect(std::chrono::milliseconds patience) {
    m_connection->Reconnect(patience);
    if (schema::LoadStoredSchema(*m_connection, m_location) !=
        schema::StoredSchema{m_schema.Text(), m_layout}) {
        throw DatabaseError(
            DatabaseError::Problem::TablesChanged,
            m_location + ": the server that answers now has a record database of another schema");
    }
    schema::CheckTables(*m_connection, m_schema, m_layout, m_location);
}

AdPtr<Session> Database::OpenSession(const SessionOptions& options) {
    return AdPtr<Session>(
        new Session(std::make_shared<SessionParts>(*m_batch, m_schema, *m_searchIndexes, options)));
}

void Database::EnsureSearchIndex(const schema::RecordType& type, const schema::Field& field) {
    m_searchIndexes->Ensure(type, field);
}

bool Database::HasSearchIndex(const schema::RecordType& type, const schema::Field& field) {
    return m_searchIndexes->Has(type, field);
}

}  // namespace recorddb
