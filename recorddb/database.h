#ifndef RECORDDB_DATABASE_H
#define RECORDDB_DATABASE_H

#include <chrono>
#include <memory>
#include <string>

#include "platform/core/adptr.h"
#include "recorddb/errors.h"
#include "recorddb/export.h"
#include "recorddb/journal.h"
#include "recorddb/layout.h"
#include "recorddb/schema.h"
#include "recorddb/session_options.h"
#include "recorddb/sql.h"

namespace recorddb {

namespace schema {
class SearchIndexes;
}
class Session;
class WriteBatch;
struct DatabaseBatch;

// An open record database, for one thread. A location is the path of an SQLite file, or the URL of
// a database on a PostgreSQL server (see sql::Open). What it hands out by reference lives as long
// as it does.
class RECORDDB_API Database {
  public:
    enum class Mode {
        ReadOnly,
        Immutable,  // reading a file that nobody writes to, without making files beside it
        ReadWrite
    };

    // Makes a new database for a schema. It appears at its place only once it is complete: a
    // failure leaves nothing behind. Throws DatabaseError (FileExists) when there is a file
    // already, or tables of those names in the schema of a server; sql::Error otherwise:
    // Unsupported for a file of the sharded layout.
    static void Create(const std::string& location, const schema::Schema& schema,
                       Layout layout = Layout::Plain);

    // Opens a database. Throws DatabaseError when it is not a record database or has a format that
    // this program cannot use, schema::SchemaError when the schema stored in it is damaged,
    // sql::Error otherwise: CannotOpen when there is no such file or it cannot be read completely,
    // NotADatabase when the file is something else, ReadOnly when Mode::ReadWrite is asked for and
    // the file may not be written to.
    static std::unique_ptr<Database> Open(const std::string& location, Mode mode);

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    const schema::Schema& GetSchema() const { return m_schema; }
    Layout GetLayout() const { return m_layout; }
    sql::Connection& GetConnection() { return *m_connection; }
    journal::Journal& GetJournal() { return m_journal; }

    // A session, through which the core works on the records (recorddb/session.h). It must not
    // outlive the database; one at a time.
    AdPtr<Session> OpenSession(const SessionOptions& options);

    // Connects anew when the connection was lost, where the engine can, and waits no longer than
    // `patience` for a server to take it (see sql::Connection). What was read before is
    // forgotten. Throws DatabaseError when another record database is found in the place of this
    // one; sql::Error.
    void Reconnect(std::chrono::milliseconds patience);

    // Begins a transaction; everything written until it ends belongs to it. Throws sql::Error, and
    // std::logic_error when one is open already.
    sql::Transaction Begin() { return sql::Transaction(*m_connection); }

    // Makes sure that an equality search on a field of a type uses an index. Nothing happens on a
    // database that is open for reading only, or for fields without a column. Runs in the
    // transaction under way, or in one of its own. Throws sql::Error.
    void EnsureSearchIndex(const schema::RecordType& type, const schema::Field& field);

    // True when an equality search on a field of a type uses an index at present. False for fields
    // without a column. Throws sql::Error.
    bool HasSearchIndex(const schema::RecordType& type, const schema::Field& field);

  private:
    friend struct DatabaseBatch;

    Database(std::unique_ptr<sql::Connection> connection, schema::Schema schema, Layout layout,
             std::string location);

    std::unique_ptr<sql::Connection> m_connection;
    schema::Schema m_schema;
    Layout m_layout;
    std::string m_location;  // as messages may show it
    journal::Journal m_journal;
    std::unique_ptr<schema::SearchIndexes> m_searchIndexes;
    std::unique_ptr<WriteBatch> m_batch;
};

}  // namespace recorddb

#endif
