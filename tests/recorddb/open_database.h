#ifndef TESTS_RECORDDB_OPEN_DATABASE_H
#define TESTS_RECORDDB_OPEN_DATABASE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "made_database.h"
#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "sample_schema.h"
#include "temporary_folder.h"

namespace recorddb {

// An open database of the sample schema, with verbs for plain SQL.
class OpenDatabaseTest : public testing::Test {
  protected:
    explicit OpenDatabaseTest(Engine engine = Engine::Sqlite)
        : m_place(engine, m_folder.File("tracker.db"), kSampleSchema) {
        Reopen();
    }

    const std::string& Path() const { return m_place.Location(); }

    void Reopen(Database::Mode mode = Database::Mode::ReadWrite) {
        m_database = Database::Open(Path(), mode);
    }

    sql::Connection& Connection() { return m_database->GetConnection(); }
    const schema::Schema& TheSchema() { return m_database->GetSchema(); }
    const schema::RecordType& Type(std::string_view name) { return *TheSchema().FindType(name); }
    const schema::Field& Field(std::string_view type, std::string_view name) {
        return *Type(type).FindField(name);
    }

    void Run(std::string_view script) { Connection().ExecuteScript(script); }

    // The first column of every row.
    std::vector<std::string> Texts(std::string_view query) { return Column(query, 0); }

    bool IsFile() const { return m_place.IsFile(); }

    // What the engine tells of its tables: their names, those of the database's own first.
    std::vector<std::string> OwnTables() {
        return Texts(IsFile() ? "SELECT name FROM sqlite_master WHERE type = 'table' "
                                "AND name LIKE 'zt\\_%' ESCAPE '\\' ORDER BY name"
                              : "SELECT tablename FROM pg_tables WHERE schemaname = "
                                "current_schema() AND tablename LIKE 'zt\\_%' ORDER BY tablename");
    }

    // The columns of a table, "name TYPE".
    std::vector<std::string> Columns(const std::string& table) {
        return Texts(IsFile() ? "SELECT name || ' ' || type FROM pragma_table_info('" + table + "')"
                              : "SELECT column_name || ' ' || upper(data_type) " + OfTable(table));
    }

    std::vector<std::string> RequiredColumns(const std::string& table) {
        return Texts(IsFile() ? "SELECT name FROM pragma_table_info('" + table +
                                    "') WHERE \"notnull\" = 1"
                              : "SELECT column_name " +
                                    OfTable(table, "is_nullable = 'NO' AND column_name <> 'dbid'"));
    }

    // The foreign keys of a table, "column > table.column ACTION", in no particular order.
    std::vector<std::string> ForeignKeys(const std::string& table) {
        return Texts(
            IsFile()
                ? "SELECT \"from\" || ' > ' || \"table\" || '.' || \"to\" || ' ' || on_delete "
                  "FROM pragma_foreign_key_list('" +
                      table + "')"
                : "SELECT a.attname || ' > ' || t.relname || '.' || b.attname || "
                  "CASE c.confdeltype WHEN 'c' THEN ' CASCADE' ELSE ' NO ACTION' END "
                  "FROM pg_constraint AS c JOIN pg_class AS t ON t.oid = c.confrelid "
                  "JOIN pg_attribute AS a ON a.attrelid = c.conrelid AND a.attnum = c.conkey[1] "
                  "JOIN pg_attribute AS b ON b.attrelid = c.confrelid AND b.attnum = c.confkey[1] "
                  "WHERE c.contype = 'f' AND c.conrelid = '" +
                      sql::Quoted(table) + "'::regclass");
    }

    std::size_t IndexCount() {
        return Texts(IsFile()
                         ? "SELECT name FROM sqlite_master WHERE type = 'index'"
                         : "SELECT indexname FROM pg_indexes WHERE schemaname = current_schema()")
            .size();
    }

    // True when the engine answers a query by searching an index for what the parameters say.
    bool IsIndexSearch(const std::string& query) {
        if (IsFile()) {
            const auto plan = Column("EXPLAIN QUERY PLAN " + query, 3);
            return plan.size() == 1 && plan.front().starts_with("SEARCH");
        }
        std::string values;
        for (int parameter = 1; query.find('$' + std::to_string(parameter)) != std::string::npos;
             ++parameter) {
            values += parameter == 1 ? "('7'" : ", '7'";
        }
        Run("PREPARE looked_at AS " + query);
        bool found = false;
        for (const std::string& step : Texts("EXPLAIN EXECUTE looked_at" + values + ")")) {
            found = found || step.find("Index Cond:") != std::string::npos;
        }
        Run("DEALLOCATE looked_at");
        return found;
    }

    TemporaryFolder m_folder;
    MadeDatabase m_place;
    std::unique_ptr<Database> m_database;

  private:
    static std::string OfTable(const std::string& table, const std::string& condition = "true") {
        return "FROM information_schema.columns WHERE table_schema = current_schema() "
               "AND table_name = '" +
               table + "' AND " + condition + " ORDER BY ordinal_position";
    }

    std::vector<std::string> Column(std::string_view query, int column) {
        const auto statement = Connection().PrepareOwn(query);
        std::vector<std::string> texts;
        while (statement->Step()) {
            texts.emplace_back(statement->Text(column));
        }
        return texts;
    }
};

}  // namespace recorddb

#endif
