#ifndef RECORDDB_SQL_SQLITE_SQLITE_STATEMENT_H
#define RECORDDB_SQL_SQLITE_SQLITE_STATEMENT_H

#include <vector>

#include "recorddb/sql.h"
#include "recorddb/sql/storage.h"

struct sqlite3;
struct sqlite3_stmt;

namespace recorddb::sql {

class SqliteStatement final : public Statement, public StorageTeller {
  public:
    // Prepares `sql`, one statement, on a handle that outlives it. Throws Error.
    SqliteStatement(sqlite3* handle, std::string_view sql);
    ~SqliteStatement() override;

    void BindInt(int parameter, std::int64_t value) override;
    void BindText(int parameter, std::string_view text) override;
    void BindBlob(int parameter, std::span<const std::byte> data) override;
    void BindNull(int parameter) override;
    bool Step() override;
    std::int64_t Execute() override;
    void Reset() noexcept override;
    bool IsNull(int column) const override;
    std::int64_t Int(int column) const override;
    std::string_view Text(int column) const override;
    std::span<const std::byte> Blob(int column) const override;
    int ColumnCount() const override;
    Storage StorageOf(int column) const override;

  private:
    void ReadParameters(std::string_view sql);
    int IndexOf(int parameter) const;
    void Check(int code) const;
    // To be called for a value that the engine had none for: it is NULL, or there was no memory to
    // copy it.
    void CheckMemory() const;
    [[noreturn]] void Fail(int code);

    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
    // SQLite numbers $2 by where it first stands in the text, not by its digits; this leads from
    // the digits (less one) to SQLite's number.
    std::vector<int> m_indexes;
};

}  // namespace recorddb::sql

#endif
