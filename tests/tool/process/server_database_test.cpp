// Which schema of a server the commands work in, and what their role needs there.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "process_fixture.h"
#include "recorddb/sql.h"
#include "server_role.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr const char* kOneType =
    "record_types:\n  user:\n    key: [login]\n    fields:\n      login: {type: text}\n";

class ServerDatabase : public ProcessFixture {
  protected:
    ServerDatabase() : ProcessFixture(Engine::Postgres) {
        m_sources = {Configuration("configuration.xml", "record", "user", "login"),
                     Records("users.xml", {{{"login", "ann"}}})};
    }

    std::vector<std::string> Command(const std::string& command, const std::string& database,
                                     const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {command, database};
        if (command != "show") {
            words.insert(words.end(), m_sources.begin(), m_sources.end());
        }
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    std::vector<std::string> m_sources;
};

TEST_F(ServerDatabase, StandsInTheSchemaThatTheOptionNames) {
    const std::vector<std::string> option = {"--schema", m_place.Schema()};
    for (const std::string command : {"check", "load", "verify", "show"}) {
        const Answer answer = Run(Command(command, TestServer(), option));
        EXPECT_EQ(answer.code, 0) << command << ": " << answer.text;
    }
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
    const std::string other = m_place.Schema() + "_other";
    EXPECT_EQ(
        Run({"init", TestServer(), m_folder.Write("new.yaml", kOneType), "--schema", other}).code,
        0);
    // The option, where both say one.
    EXPECT_THAT(
        Run({"show", recorddb::sql::WithSchema(TestServer(), other), "--schema", m_place.Schema()})
            .text,
        HasSubstr("bug"));
    ServerRole::Server("DROP SCHEMA " + other + " CASCADE");
}

TEST_F(ServerDatabase, StandsInTheFirstSchemaOfTheSearchPathOtherwise) {
    const std::string url =
        std::string(TestServer()) + "&options=-csearch_path%3Dnone," + m_place.Schema() + ",public";
    const Answer answer = Run(Command("load", url));
    EXPECT_EQ(answer.code, 0) << answer.text;
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
}

TEST_F(ServerDatabase, SchemaOptionIsNotForFiles) {
    const Answer answer =
        Run(Command("load", m_folder.File("tracker.db"), {"--schema", m_place.Schema()}));
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("is for a database on a server"));
}

// What a role may do there.
class RoleOfServerDatabase : public ServerDatabase {
  protected:
    void SetUp() override {
        if (!IsFile()) {
            m_role.Make();
        }
    }

    void TearDown() override {
        if (!IsFile()) {
            m_role.Drop();
        }
    }

    void Grant(const std::string& rights) const {
        ServerRole::Server("GRANT USAGE ON SCHEMA " + m_place.Schema() + " TO " + m_role.Name() +
                           "; GRANT " + rights + " ON ALL TABLES IN SCHEMA " + m_place.Schema() +
                           " TO " + m_role.Name());
    }

    Answer RunAsRole(const std::string& command) const {
        return Run(Command(command, m_database + "&user=" + m_role.Name()));
    }

    const ServerRole m_role{"role_of_" + m_place.Schema()};
};

TEST_F(RoleOfServerDatabase, IsToldWhichRightItLacks) {
    for (const std::string command : {"check", "load", "verify", "show"}) {
        const Answer answer = RunAsRole(command);
        EXPECT_EQ(answer.code, 3);
        EXPECT_THAT(answer.text,
                    AllOf(HasSubstr(m_role.Name()), HasSubstr("the right USAGE on the schema"),
                          HasSubstr("GRANT USAGE ON SCHEMA")))
            << command;
    }
    Grant("SELECT");
    for (const std::string command : {"check", "load"}) {
        const Answer answer = RunAsRole(command);
        EXPECT_EQ(answer.code, 3);
        EXPECT_THAT(answer.text,
                    AllOf(HasSubstr(m_role.Name()), HasSubstr("the right INSERT, UPDATE, DELETE"),
                          HasSubstr("GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES")))
            << command;
    }
    EXPECT_EQ(Query("SELECT count(*) FROM \"user\""), "0");
}

TEST_F(RoleOfServerDatabase, NeedsNoMoreToReadThanSelect) {
    ASSERT_EQ(Load(m_sources), 0) << Said();
    Grant("SELECT");
    for (const std::string command : {"verify", "show"}) {
        const Answer answer = RunAsRole(command);
        EXPECT_EQ(answer.code, 0) << command << ": " << answer.text;
    }
}

TEST_F(RoleOfServerDatabase, NeedsNoMoreToLoadThanToChangeRows) {
    Grant("SELECT, INSERT, UPDATE, DELETE");
    for (const std::string command : {"check", "load"}) {
        const Answer answer = RunAsRole(command);
        EXPECT_EQ(answer.code, 0) << command << ": " << answer.text;
    }
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
}

}  // namespace
}  // namespace tool
