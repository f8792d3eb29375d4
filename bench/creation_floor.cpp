#include "creation_floor.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "generated_tracker.h"

namespace bench {

namespace {

// Type ids follow the order of the schema file: keyword, bug.
constexpr int kBugType = 2;

class Sqlite {
  public:
    explicit Sqlite(const std::filesystem::path& path) {
        Check(sqlite3_open(path.c_str(), &m_handle));
        Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;"
            "PRAGMA cache_size = -32768; PRAGMA temp_store = MEMORY;");
    }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;
    ~Sqlite() { sqlite3_close(m_handle); }

    void Check(int code) const {
        if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
            throw std::runtime_error(sqlite3_errmsg(m_handle));
        }
    }
    void Run(const char* sql) { Check(sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr)); }
    sqlite3* Handle() const { return m_handle; }

  private:
    sqlite3* m_handle = nullptr;
};

class Statement {
  public:
    Statement(Sqlite& sqlite, const std::string& sql) : m_sqlite(sqlite) {
        sqlite.Check(sqlite3_prepare_v3(sqlite.Handle(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                                        &m_statement, nullptr));
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(m_statement); }

    Statement& Bind(std::int64_t value) {
        sqlite3_bind_int64(m_statement, ++m_parameter, value);
        return *this;
    }
    Statement& Bind(const std::string& text) {
        sqlite3_bind_text(m_statement, ++m_parameter, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
        return *this;
    }
    Statement& BindNull() {
        sqlite3_bind_null(m_statement, ++m_parameter);
        return *this;
    }
    void Run() {
        m_sqlite.Check(sqlite3_step(m_statement));
        m_sqlite.Check(sqlite3_reset(m_statement));
        m_parameter = 0;
    }

  private:
    Sqlite& m_sqlite;
    sqlite3_stmt* m_statement = nullptr;
    int m_parameter = 0;
};

std::string InsertBug() {
    std::string columns = "dbid, zt_version, id, state, description";
    std::string values = "?, ?, ?, ?, ?";
    for (const char* name : kFieldNames) {
        columns += fmt::format(", \"{}\"", name);
        values += ", ?";
    }
    return fmt::format("INSERT INTO bug ({}) VALUES ({})", columns, values);
}

void WriteKeywords(Sqlite& sqlite) {
    Statement insert(sqlite, "INSERT INTO keyword (dbid, zt_version, name) VALUES (?, ?, ?)");
    for (std::size_t i = 0; i < kKeywords; ++i) {
        const std::string name = KeywordName(i);
        insert.Bind(static_cast<std::int64_t>(i) + 1).Bind(1).Bind(name).Run();
    }
}

class RecordWriter {
  public:
    explicit RecordWriter(Sqlite& sqlite)
        : m_bug(sqlite, InsertBug()),
          m_keyword(sqlite,
                    "INSERT INTO bug__keywords (record, position, target) VALUES (?, ?, ?)"),
          m_history(sqlite,
                    "INSERT INTO zt_history (record_type, record, entry, field, action_time, "
                    "expiry_time, user_name, action_name, old_state, new_state, comments) "
                    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)") {}

    void Write(std::int64_t dbid, const GeneratedRecord& record) {
        const std::string displayId = fmt::format("BUG{:08}", dbid);
        const std::string state = "NEW";
        m_bug.Bind(dbid).Bind(1).Bind(displayId).Bind(state).Bind(record.description);
        for (std::size_t i = 0; i + 1 < record.fields.size(); ++i) {
            m_bug.Bind(record.fields[i]);
        }
        m_bug.Bind(std::stoll(record.fields.back())).Run();
        for (std::size_t i = 0; i < record.keywords.size(); ++i) {
            m_keyword.Bind(dbid)
                .Bind(static_cast<std::int64_t>(i))
                .Bind(static_cast<std::int64_t>(record.keywords[i]) + 1)
                .Run();
        }
        WriteHistory(dbid, record);
    }

  private:
    void WriteHistory(std::int64_t dbid, const GeneratedRecord& record) {
        const std::string field = "log";
        const std::string comments;
        for (std::size_t i = 0; i < record.history.size(); ++i) {
            const HistoryLine& line = record.history[i];
            m_history.Bind(kBugType).Bind(dbid).Bind(static_cast<std::int64_t>(i) + 1).Bind(field);
            m_history.Bind(line.time);
            if (i + 1 < record.history.size()) {
                m_history.Bind(record.history[i + 1].time);
            } else {
                m_history.BindNull();
            }
            m_history.Bind(line.user).Bind(line.action).Bind(line.oldState).Bind(line.newState);
            m_history.Bind(comments).Run();
        }
    }

    Statement m_bug;
    Statement m_keyword;
    Statement m_history;
};

}  // namespace

Run WriteFloor(const std::filesystem::path& database, std::int64_t records) {
    std::vector<GeneratedRecord> rows;
    rows.reserve(static_cast<std::size_t>(records));
    for (std::int64_t i = 0; i < records; ++i) {
        rows.emplace_back(i);
    }
    const StopWatch watch;
    {
        Sqlite sqlite(database);
        sqlite.Run("BEGIN IMMEDIATE");
        WriteKeywords(sqlite);
        RecordWriter writer(sqlite);
        for (std::int64_t i = 0; i < records; ++i) {
            writer.Write(i + 1, rows[static_cast<std::size_t>(i)]);
        }
        sqlite.Run("COMMIT");
    }
    return watch.Taken();
}

}  // namespace bench
