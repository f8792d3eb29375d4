#ifndef TESTS_TOOL_RANDOM_LOAD_H
#define TESTS_TOOL_RANDOM_LOAD_H

#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "compared_load.h"

namespace tool {

// How many seeds a test of loads at random takes: this many, or ZT_SEEDS.
inline std::uint64_t SeedsOr(std::uint64_t few) {
    const char* const given = std::getenv("ZT_SEEDS");
    return given == nullptr ? few : std::strtoull(given, nullptr, 10);
}

// A load of records at random, into a database of its own.
class RandomLoad : public ComparedLoad {
  public:
    // A few hundred records, `times` as many.
    RandomLoad(Engine engine, std::uint64_t seed, std::size_t times = 1)
        : ComparedLoad(engine), m_state(seed * 2 + 1), m_times(times), m_byHand(seed % 2 == 0) {
        if (m_byHand) {
            Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
        }
    }

    // Return all that was told, all that was set aside, and all that is in the database.
    enum class Way { OneByOne, Gathered, LookingAhead };
    std::string Run(Way way) {
        if (way == Way::OneByOne) {
            m_options.trace = m_folder.Path() / "trace";
        }
        m_options.looksAhead = way == Way::LookingAhead;
        return Run();
    }
    std::string Run() {
        for (const char* const name : {"file0", "file1", "file2"}) {
            m_folder.Write(name, std::string("content of ") + name);
        }
        const std::string told = LoadAll(Sources());
        return told + Tables();
    }

  private:
    // One call an expression: compilers differ in the order in which they make several.
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
            for (std::size_t i = 0; i < count * m_times; ++i) {
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
            return {{"source_id", One("id", 120 * m_times)}, {"history", Lines()}};
        };
        const auto files = [this]() -> Fields {
            return {{"source_id", One("id", 60 * m_times)}, {"files", Files()}};
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
            const std::string file = One("file", 3);
            files += fmt::format("{}1\n{}\n0\nof {}", files.empty() ? "" : "\n", file, Below(9));
        }
        return files + (Below(8) == 0 ? "\n1\nmissing\n0\n" : "");
    }

    // Which titles there are when the index by hand is asked depends on what is written together,
    // so where there is one, a record keeps its title.
    std::string TitleOf(std::size_t id) {
        return "title" + std::to_string(m_byHand ? id % (90 * m_times) : Below(400 * m_times));
    }

    Fields Bug(bool mayBeTwin) {
        const std::size_t id = Below(120 * m_times);
        Fields fields = {{"source_id", "id" + std::to_string(id)}, {"title", TitleOf(id)}};
        const auto add = [&](const char* name, std::size_t in, const std::string& value) {
            if (Below(in) == 0) {
                fields.push_back({name, value});
            }
        };
        add("votes", 3, Below(10) == 0 ? "many" : std::to_string(Below(50)));
        add("owner", 2, One("user", 33));
        const std::string word = One("word", 9);
        add("keywords", 2, word + "," + One("word", 8));
        add("state", 3, Below(12) == 0 ? "LOST" : "OPEN");
        add("log", 2, Lines());
        add("colour", 40, "red");                // refused when it is written,
        add("title", 40, "&nosuch;");            // when it is read,
        add("title", 40, std::string(31, 'x'));  // and when it is checked
        if (Below(6) == 0) {
            add("files", 1, Files());
        }
        // What the index refuses could be refused as a twin before; the reason told is one of both.
        if (mayBeTwin && !m_byHand) {
            add("twin_of", 5, One("id", 120 * m_times));
        }
        return fields;
    }

    std::uint64_t m_state;
    std::size_t m_times;
    bool m_byHand;
};

}  // namespace tool

#endif
