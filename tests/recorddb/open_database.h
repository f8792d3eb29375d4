#ifndef TESTS_RECORDDB_OPEN_DATABASE_H
#define TESTS_RECORDDB_OPEN_DATABASE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "sample_schema.h"
#include "temporary_folder.h"

namespace recorddb {

// An open database of the sample schema, with verbs for plain SQL.
class OpenDatabaseTest : public testing::Test {
  protected:
    OpenDatabaseTest() {
        Database::Create(Path(), schema::ReadSchema(kSampleSchema, "sample.yaml"));
        Reopen();
    }

    std::string Path() const { return m_folder.File("tracker.db"); }

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

    // How the engine goes about a query, one line per step.
    std::vector<std::string> Plan(const std::string& query) {
        return Column("EXPLAIN QUERY PLAN " + query, 3);
    }

    TemporaryFolder m_folder;
    std::unique_ptr<Database> m_database;

  private:
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
