#ifndef TESTS_SUPPORT_ENGINES_H
#define TESTS_SUPPORT_ENGINES_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

#include "recorddb/layout.h"
#include "recorddb/sql.h"

// The engines that a database can stand on. A test that holds on all of them is written once:
//
//     class ThingTest : public OnEachEngine<SomeTest> {};      // SomeTest(Engine engine)
//     TEST_P(ThingTest, DoesSomething) { ... }
//     ON_EACH_ENGINE(ThingTest);
//
// The server is the one that ZT_TEST_SERVER names (scripts/private-server). Without one, the tests
// on it are skipped.
//
// PostgresSharded is the same server with databases of the sharded layout, as ordinary tables.
enum class Engine { Sqlite, Postgres, PostgresSharded };

inline void PrintTo(Engine engine, std::ostream* out) {
    *out << (engine == Engine::Sqlite     ? "Sqlite"
             : engine == Engine::Postgres ? "Postgres"
                                          : "PostgresSharded");
}

inline recorddb::Layout LayoutOn(Engine engine) {
    return engine == Engine::PostgresSharded && std::getenv("ZT_TEST_SERVER") != nullptr
               ? recorddb::Layout::Sharded
               : recorddb::Layout::Plain;
}

inline const char* TestServer() {
    return std::getenv("ZT_TEST_SERVER");
}

// A place for one database, at which there is none yet; whatever is made there goes with the
// object. On an engine that cannot be had it is one for SQLite, and the test is skipped.
class DatabasePlace {
  public:
    // `file` is where it stands when it is a file.
    DatabasePlace(Engine engine, std::string file) : m_location(std::move(file)) {
        if (engine != Engine::Sqlite) {
            TestServer() == nullptr ? Skip() : MoveToServer();
        }
    }
    DatabasePlace(const DatabasePlace&) = delete;
    DatabasePlace& operator=(const DatabasePlace&) = delete;
    ~DatabasePlace() { DropSchema(); }

    // Removes what is there; the place can be used again.
    void DropSchema() const {
        if (!m_schema.empty()) {
            Server().ExecuteScript("DROP SCHEMA IF EXISTS " + m_schema + " CASCADE");
        }
    }

    const std::string& Location() const { return m_location; }

    // Empty for a file.
    const std::string& Schema() const { return m_schema; }

    bool IsFile() const { return m_schema.empty(); }

    // A connection to the server for work that is not on one test's database.
    static recorddb::sql::Connection& Server() {
        static const auto connection =
            recorddb::sql::Open(TestServer(), recorddb::sql::OpenMode::ReadWrite);
        return *connection;
    }

  private:
    // Not in a constructor, which the macro would return from.
    static void Skip() {
        GTEST_SKIP() << "there is no PostgreSQL server; scripts/private-server COMMAND runs a "
                        "command with one";
    }

    void MoveToServer() {
        static int count = 0;
        m_schema = "test_" + std::to_string(getpid()) + "_" + std::to_string(++count);
        m_location = recorddb::sql::WithSchema(TestServer(), m_schema);
    }

    std::string m_location;
    std::string m_schema;
};

template <typename Fixture>
class OnEachEngine : public Fixture, public testing::WithParamInterface<Engine> {
  protected:
    OnEachEngine() : Fixture(testing::WithParamInterface<Engine>::GetParam()) {}
};

#define ON_EACH_ENGINE(suite)                                                              \
    INSTANTIATE_TEST_SUITE_P(On, suite, testing::Values(Engine::Sqlite, Engine::Postgres), \
                             [](const testing::TestParamInfo<Engine>& info) {              \
                                 return testing::PrintToString(info.param);                \
                             })

// As ON_EACH_ENGINE, for suites whose statements differ where the layout is sharded.
#define ON_EACH_LAYOUT(suite)                                                                  \
    INSTANTIATE_TEST_SUITE_P(                                                                  \
        On, suite, testing::Values(Engine::Sqlite, Engine::Postgres, Engine::PostgresSharded), \
        [](const testing::TestParamInfo<Engine>& info) {                                       \
            return testing::PrintToString(info.param);                                         \
        })

// As ON_EACH_LAYOUT, for suites that are about servers.
#define ON_A_SERVER_IN_EACH_LAYOUT(suite)                                                \
    INSTANTIATE_TEST_SUITE_P(On, suite,                                                  \
                             testing::Values(Engine::Postgres, Engine::PostgresSharded), \
                             [](const testing::TestParamInfo<Engine>& info) {            \
                                 return testing::PrintToString(info.param);              \
                             })

#endif
