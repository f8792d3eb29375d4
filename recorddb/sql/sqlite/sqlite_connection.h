#ifndef RECORDDB_SQL_SQLITE_SQLITE_CONNECTION_H
#define RECORDDB_SQL_SQLITE_SQLITE_CONNECTION_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/sql.h"
#include "recorddb/sql/statement_cache.h"

struct sqlite3;

namespace recorddb::sql {

// A connection to one SQLite file.
class SqliteConnection final : public Connection {
  public:
    // Opens the file at `path`. Throws Error as sql::Open does. Opening does not change a file that
    // another program has made.
    static std::unique_ptr<Connection> Open(const std::string& path, OpenMode mode);

    // The files that the engine may put beside a database file.
    static std::vector<std::string> SideFiles(const std::string& path);

    // Opens a database of its own in a temporary file without a name.
    static std::unique_ptr<Connection> OpenScratch(Undoing undoing);

    ~SqliteConnection() override;

    Statement& Prepare(std::string_view sql) override;
    std::unique_ptr<Statement> PrepareOwn(std::string_view sql) override;
    void ExecuteScript(std::string_view sql) override;
    bool HasTable(std::string_view name) override;
    bool HasIndex(std::string_view name) override;
    const Dialect& GetDialect() const override;
    bool KeepTurn() override;
    void WatchOthers() override;
    std::string ShareMoment() override;
    bool JoinMoment(const std::string& moment) override;
    void LetOthersWrite() override {}
    bool IsReadOnly() const override { return m_readOnly; }
    bool TransactionSurvivesErrors() const override { return true; }

  protected:
    void Run(Control control) override;
    bool EngineInTransaction() const override;

  private:
    struct Closer {
        void operator()(sqlite3* handle) const noexcept;
    };
    using Handle = std::unique_ptr<sqlite3, Closer>;

    SqliteConnection(Handle handle, OpenMode mode);

    std::uint64_t WriteCount() const;
    void ExecuteControl(Control control);
    void BeginWriting();

    static Handle OpenHandle(const std::string& path, int flags);
    static Handle OpenReadOnly(const std::string& path);
    static Handle OpenImmutable(const std::string& path);
    static Handle OpenReadWrite(const std::string& path, bool create);
    static Handle OpenInMode(const std::string& file, OpenMode mode);

    Handle m_handle;
    bool m_readOnly;
    std::uint64_t m_scriptCount = 0;
    StatementCache m_statements;  // destroyed before the handle that the statements belong to
    std::int64_t m_versionOfOthers = 0;  // grows with what other connections commit
    std::array<Statement*, 7> m_controls{};
    std::vector<std::uint64_t> m_writesBefore;  // WriteCount at the beginning of each savepoint
};

}  // namespace recorddb::sql

#endif
