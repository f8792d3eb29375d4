// The records of a group are gathered and written together. What is told of them, and what becomes
// of them, is as if each had been written by itself, as it is where a trace is asked for.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <tuple>

#include "load_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;

class RefusedGroupTest : public OnEachEngine<LoadFixture> {
  protected:
    std::string Bugs() { return Configuration("bugs.xml", "record", "bug", "source_id"); }
};

TEST_P(RefusedGroupTest, RecordThatTheDatabaseRefusesIsRejectedByItself) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    EXPECT_EQ(Load({Bugs(), Records("data.xml", {{{"source_id", "a"}, {"title", "A"}},
                                                 {{"source_id", "b"}, {"title", "A"}},
                                                 {{"source_id", "c"}, {"title", "C"}}})}),
              1);
    EXPECT_EQ(Query("SELECT id || source_id FROM bug ORDER BY dbid"), "BUG00000001a\nBUG00000002c");
    EXPECT_THAT(Said(), HasSubstr("record 2 (b)"));
    EXPECT_THAT(Said(), HasSubstr("3 records read: 2 created, 0 updated"));
    EXPECT_EQ(Query("SELECT created || ' ' || rejected || ' ' || complete FROM zt_journal"),
              "2 1 1");
}

TEST_P(RefusedGroupTest, RejectOfAGroupThatIsDoneAgainIsReportedOnce) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    m_options.rejects = m_folder.Path() / "rejects";
    EXPECT_EQ(Load({Bugs(), Records("data.xml", {{{"source_id", "a"}, {"title", "A"}},
                                                 {{"source_id", "b"}, {"votes", "many"}},
                                                 {{"source_id", "c"}, {"title", "A"}}})}),
              1);
    const std::string said = Said();
    EXPECT_EQ(said.find("record 2 (b)"), said.rfind("record 2 (b)"));
    EXPECT_LT(said.find("record 2 (b)"), said.find("record 3 (c)"));
    EXPECT_THAT(said, HasSubstr("2 rejected"));
}

TEST_P(RefusedGroupTest, LaterGroupsAreGatheredAgain) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    std::vector<Fields> records;
    for (int i = 0; i < 350; ++i) {
        const std::string id = std::to_string(i);
        records.push_back({{"source_id", id}, {"title", i % 120 == 7 ? "same" : id}});
    }
    EXPECT_EQ(Load({Bugs(), Records("data.xml", records)}), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "348");
    EXPECT_EQ(Query("SELECT max(dbid) FROM bug"), "348");
}

ON_EACH_ENGINE(RefusedGroupTest);

// A text without its lines of records per second.
std::string WithoutRates(const std::string& text) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("per second") == std::string::npos &&
            line.find("records/s") == std::string::npos) {
            kept += line + '\n';
        }
    }
    return kept;
}

// A text without any occurrence of a piece, which may be empty.
std::string Without(std::string text, const std::string& piece) {
    for (std::size_t at = piece.empty() ? std::string::npos : text.find(piece);
         at != std::string::npos; at = text.find(piece, at)) {
        text.erase(at, piece.size());
    }
    return text;
}

// A load of records at random, into a database of its own.
class RandomLoad : public LoadFixture {
  public:
    RandomLoad(Engine engine, std::uint64_t seed) : LoadFixture(engine), m_state(seed * 2 + 1) {
        if (seed % 2 == 0) {
            Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
        }
    }

    // Returns all that was told and all that is in the database.
    enum class Way { OneByOne, Gathered, LookingAhead };
    std::string Run(Way way) {
        if (way == Way::OneByOne) {
            m_options.trace = m_folder.Path() / "trace";
        }
        m_options.looksAhead = way == Way::LookingAhead;
        m_options.rejects = m_folder.Path() / "rejects";
        m_options.attachments = m_folder.Path();
        for (const char* const name : {"file0", "file1", "file2"}) {
            m_folder.Write(name, std::string("content of ") + name);
        }
        std::string told;
        for (const std::vector<std::string>& sources : Sources()) {
            const int code = Load(sources);
            told += fmt::format("{}\n{}", code, Said());
        }
        // Two loads differ in how long they take and in where they stand.
        const std::string all = WithoutRates(told) + Dump();
        return Without(Without(all, m_folder.Path().string()), m_place.Schema());
    }

    void TestBody() override {}

  private:
    std::size_t Below(std::size_t bound) {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<std::size_t>((m_state >> 11U) % bound);
    }
    std::string One(const char* name, std::size_t bound) {
        return name + std::to_string(Below(bound));
    }

    std::vector<std::vector<std::string>> Sources() {
        const auto upsert =
            "<duplicate_id name=\"twin_of\"/><updaterecord name=\"TRUE\"/>"
            "<updateinsert name=\"TRUE\"/>";
        const auto replace =
            "<updaterecord name=\"TRUE\"/><replacereflist name=\"TRUE\"/>"
            "<importstate name=\"TRUE\"/>";
        const auto data = [this](const char* file, std::size_t count, auto record) {
            std::vector<Fields> records;
            for (std::size_t i = 0; i < count; ++i) {
                records.push_back(record());
            }
            return Records(file, records);
        };
        const auto bug = [this] { return Bug(false); };
        const auto twin = [this] { return Bug(true); };
        const auto user = [this]() -> Fields {
            return {{"login", One("user", 30)}, {"email", One("mail", 40)}};
        };
        const auto lines = [this]() -> Fields {
            return {{"source_id", One("id", 120)}, {"history", Lines()}};
        };
        const auto files = [this]() -> Fields {
            return {{"source_id", One("id", 60)}, {"files", Files()}};
        };
        return {
            {Configuration("c1.xml", "record", "user", "login"), data("1.xml", 40, user)},
            {Configuration("c2.xml", "record", "keyword", "name"),
             data("2.xml", 6,
                  [this]() -> Fields {
                      return {{"name", One("word", 8)}};
                  })},
            {Configuration("c3.xml", "record", "bug", "source_id"), data("3.xml", 130, bug)},
            {Configuration("c4.xml", "record", "bug", "source_id", upsert),
             data("4.xml", 220, twin), Configuration("c5.xml", "history", "bug", "source_id"),
             data("5.xml", 120, lines)},
            {Configuration("c6.xml", "attachments", "bug", "source_id"), data("6.xml", 110, files)},
            {Configuration("c7.xml", "record", "user", "login", upsert), data("7.xml", 120, user),
             Configuration("c8.xml", "record", "bug", "source_id", replace),
             data("8.xml", 110, bug)}};
    }

    std::string Lines() {
        std::string lines;
        for (std::size_t count = 1 + Below(4); count > 0; --count) {
            lines += fmt::format("{}x\t2020-01-0{} 00:00:00\tu\tmodify\tNEW\tOPEN",
                                 lines.empty() ? "" : "\n", 1 + Below(9));
        }
        return lines + (Below(12) == 0 ? "\nx\tnever\tu\tv\tw\tx" : "");
    }

    std::string Files() {
        std::string files;
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            files += fmt::format("{}1\n{}\n0\nof {}", files.empty() ? "" : "\n", One("file", 3),
                                 Below(9));
        }
        return files + (Below(8) == 0 ? "\n1\nmissing\n0\n" : "");
    }

    Fields Bug(bool mayBeTwin) {
        Fields fields = {{"source_id", One("id", 120)}, {"title", One("title", 400)}};
        const auto add = [&](const char* name, std::size_t in, const std::string& value) {
            if (Below(in) == 0) {
                fields.push_back({name, value});
            }
        };
        add("votes", 3, Below(10) == 0 ? "many" : std::to_string(Below(50)));
        add("owner", 2, One("user", 33));
        add("keywords", 2, One("word", 9) + "," + One("word", 8));
        add("state", 3, Below(12) == 0 ? "LOST" : "OPEN");
        add("log", 2, Lines());
        add("colour", 40, "red");                // refused when it is written,
        add("title", 40, "&nosuch;");            // when it is read,
        add("title", 40, std::string(31, 'x'));  // and when it is checked
        if (Below(6) == 0) {
            add("files", 1, Files());
        }
        if (mayBeTwin) {
            add("twin_of", 5, One("id", 120));
        }
        return fields;
    }

    std::uint64_t m_state;
};

class GroupOrOneByOneTest : public testing::TestWithParam<std::tuple<Engine, std::uint64_t>> {
  protected:
    static std::string Load(RandomLoad::Way way) {
        const auto [engine, seed] = GetParam();
        return RandomLoad(engine, seed).Run(way);
    }
};

TEST_P(GroupOrOneByOneTest, LoadAtRandomComesToTheSame) {
    const std::string oneByOne = Load(RandomLoad::Way::OneByOne);
    EXPECT_THAT(oneByOne, HasSubstr("rejected"));
    EXPECT_EQ(Load(RandomLoad::Way::Gathered), oneByOne);
    EXPECT_EQ(Load(RandomLoad::Way::LookingAhead), oneByOne);
}

INSTANTIATE_TEST_SUITE_P(On, GroupOrOneByOneTest,
                         testing::Combine(testing::Values(Engine::Sqlite, Engine::Postgres),
                                          testing::Range<std::uint64_t>(1, 7)),
                         [](const auto& test) {
                             return fmt::format("{}_seed_{}",
                                                testing::PrintToString(std::get<0>(test.param)),
                                                std::get<1>(test.param));
                         });

}  // namespace
}  // namespace tool
