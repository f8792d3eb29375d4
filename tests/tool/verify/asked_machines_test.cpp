// What load, check, verify and show ask a database whose tables are spread over machines.
#include <gmock/gmock.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "nasty_source.h"
#include "sent_statements.h"
#include "server_proxy.h"
#include "spread_statements.h"
#include "tool/commands/show_command.h"
#include "tool/commands/verify_command.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// What goes to all machines is known here by a part of the statement. So many times at most may one
// of these be executed, however many records there are.
constexpr std::size_t kFewTimes = 4;
const std::vector<std::string> kOfWholeTables = {
    // The numbers of records, and the next thousand of them.
    "SELECT count(*) FROM", "ORDER BY dbid LIMIT 1000",
    // The check of the database itself.
    "SELECT max(dbid) FROM", "FROM \"user\" ORDER BY dbid", "FROM \"bug\" ORDER BY dbid",
    "FROM \"bug__others\" ORDER BY record", "FROM zt_history ORDER BY",
    "FROM zt_duplicate ORDER BY", "FROM zt_attachment ORDER BY", "FROM zt_content ORDER BY"};

// These come as often as something is searched that is no key.
const std::vector<std::string> kSearches = {
    // References are mapped to titles, which several bugs may have.
    "WHERE \"title\" = $1",
    // Whether others have the content of an attachment that is removed.
    "SELECT 1 FROM zt_attachment WHERE sha256 = $1",
    // The duplicates of a record that is shown.
    "SELECT duplicate FROM zt_duplicate WHERE record_type = $1 AND original = $2"};

class AskedMachinesTest : public NastySource {
  protected:
    AskedMachinesTest() : NastySource(Engine::PostgresSharded) {}

    // Does something with a proxy in front of the server.
    void Through(SentStatements& sent, const std::function<void()>& work) {
        const std::string direct = m_database;
        {
            const ServerProxy proxy(SocketFolderOf(direct), m_folder.Path(), sent.Watch());
            m_database = UrlWithSocketIn(direct, m_folder.Path());
            work();
        }
        m_database = direct;
    }

    void RunAll() {
        constexpr std::size_t few = 5;
        SetWorkers(3, few, {});
        Check();
        LoadAll({Sources()});
        Verify(3);
        Show();
    }

    void Verify(std::size_t workers) {
        VerifyOptions options;
        options.database = m_database;
        options.sources = Sources();
        options.attachments = m_folder.Path();
        options.exact = true;
        options.workers = workers;
        std::ostringstream out;
        EXPECT_EQ(RunVerify(options, out, out), 1);
        EXPECT_THAT(out.str(), HasSubstr("NOT verified"));
    }

    void Show() {
        std::ostringstream out;
        RunShow({.database = m_database, .type = "", .id = ""}, out);
        RunShow({.database = m_database, .type = "bug", .id = ""}, out);
        RunShow({.database = m_database, .type = "bug", .id = "BUG00000001"}, out);
        EXPECT_THAT(out.str(), HasSubstr("BUG00000001"));
    }

    SentStatements m_sent;
};

TEST_F(AskedMachinesTest, StatementsForEachRecordSayWhereItsRowsAre) {
    if (TestServer() == nullptr) {
        return;
    }
    Through(m_sent, [this] { RunAll(); });
    std::vector<std::string> askAll = kOfWholeTables;
    askAll.insert(askAll.end(), kSearches.begin(), kSearches.end());
    const auto statements = [](const std::vector<std::string>& mayAskAll) {
        return recorddb::SpreadStatements({"user", "bug"}, {"bug__others"}, mayAskAll);
    };
    recorddb::SpreadStatements all = statements(askAll);
    recorddb::SpreadStatements butSearches = statements(kSearches);
    for (const auto& [statement, times] : m_sent.Executed()) {
        all.Take(statement);
        butSearches.Take(statement);
    }
    EXPECT_THAT(all.Unclear(), IsEmpty());
    EXPECT_THAT(all.Unused(), IsEmpty());
    EXPECT_GT(all.Clear(), 40U);
    for (const std::string& statement : butSearches.Unclear()) {
        EXPECT_LE(m_sent.Executed().at(statement), kFewTimes) << statement;
    }
}

// It asks for the parts of fifty records together. What the sources name is looked up by itself.
TEST_F(AskedMachinesTest, ComparisonDoesNotAskForEachRecordByItself) {
    if (TestServer() == nullptr) {
        return;
    }
    LoadAll({Sources()});
    Through(m_sent, [this] { Verify(1); });
    constexpr std::size_t few = 25;  // there are two hundred bugs
    for (const auto& [statement, times] : m_sent.Executed()) {
        if (statement.find("FROM zt_key ") == std::string::npos &&
            statement.find("FROM zt_journal ") == std::string::npos) {
            EXPECT_LE(times, few) << statement;
        }
    }
}

}  // namespace
}  // namespace tool
