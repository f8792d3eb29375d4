#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "guarded_packets.h"
#include "random_records.h"
#include "tool/guarded/guarded_text.h"

namespace tool {
namespace {

// Random values of all kinds, through a load, changes, a comparison, and rejects that are loaded
// again.
class RandomGuardedPackets : public GuardedPackets {
  protected:
    static constexpr std::size_t kCount = 12;

    std::string Odd(std::size_t most = 100) {
        std::string value = m_random.Value();
        while (Obx_String::FromUtf8(value).GetLength() > static_cast<int>(most)) {
            value = m_random.Value();
        }
        return value;
    }
    // Some that differ from each other.
    std::vector<std::string> Different(std::size_t most) {
        std::vector<std::string> values;
        while (values.size() < kCount) {
            std::string value = Odd(most);
            if (!value.empty() && std::find(values.begin(), values.end(), value) == values.end()) {
                values.push_back(std::move(value));
            }
        }
        return values;
    }
    const std::string& OneOf(const std::vector<std::string>& values) {
        return values[m_random.Below(values.size())];
    }
    std::vector<std::string> SomeOf(const std::vector<std::string>& values) {
        std::vector<std::string> some;
        for (const std::string& value : values) {
            if (m_random.Below(4) == 0) {
                some.push_back(value);
            }
        }
        return some;
    }
    std::string FileName(std::size_t number) {
        std::string name = Odd() + "." + std::to_string(number);
        // What no name of a file has, and what the database does not take.
        std::replace_if(
            name.begin(), name.end(), [](char c) { return c == '/' || c == '\r' || c == '\n'; },
            '_');
        return MakeFile(name);
    }

    const unsigned m_seed = reading::NewSeed();
    reading::RandomText m_random{m_seed};
};

TEST_P(RandomGuardedPackets, ArriveAsTheyAre) {
    SCOPED_TRACE("seed " + std::to_string(m_seed));
    const auto names = Different(100);
    const auto emails = Different(100);
    const auto ids = Different(100);
    std::vector<Fields> keywords;
    std::vector<Fields> users;
    std::vector<Fields> bugs;
    std::vector<Fields> changes;
    std::vector<Fields> history;
    std::vector<Fields> attachments;
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < kCount; ++i) {
        keywords.push_back({{"name", Xml(names[i])}});
        users.push_back({{"login", std::to_string(i)}, {"email", Xml(emails[i])}});
        bugs.push_back({{"source_id", Xml(ids[i])},
                        {"title", Xml("-" + Odd(29))},
                        {"owner", Xml(OneOf(emails), PacketPlace::Reference)},
                        {"keywords", List(SomeOf(names))}});
        titles.push_back("x" + Odd(29));
        changes.push_back({{"source_id", Xml(ids[i])},
                           {"title", Xml(titles.back())},
                           {"owner", Xml(OneOf(emails), PacketPlace::Reference)},
                           {"keywords", List(SomeOf(names))}});
        if (i > 0) {
            changes.back().emplace_back("twin", Xml(ids[0]));
        }
        std::string lines;
        for (int entry = 0; entry < 3; ++entry) {
            lines += HistoryLineXml({Odd(), "2020-01-0" + std::to_string(entry + 1), "u" + Odd(15),
                                     "a" + Odd(15), "b" + Odd(15), "c" + Odd(15)});
        }
        history.push_back({{"source_id", Xml(ids[i])}, {"history", lines}});
        attachments.push_back({{"source_id", Xml(ids[i])},
                               {"files", AttachmentXml(FileName(i), Odd()) +
                                             AttachmentXml(FileName(kCount + i), Odd())}});
    }
    auto sources = Together(Data("keywords", "keyword", "name", keywords),
                            Data("users", "user", "login", users));
    sources = Together(sources, Bugs("bugs", bugs, kMapped));
    sources = Together(sources, Bugs("history", history, "", "history"));
    sources = Together(sources, Bugs("attachments", attachments, "", "attachments"));
    sources = Together(sources, Bugs("again", attachments, "<x/>", "attachments"));
    sources = Together(sources, Bugs("changes", changes, std::string(kMapped) + kUpdate));
    m_options.looksAhead = m_random.Below(2) == 0;
    EXPECT_EQ(LoadAndVerify(sources), 0) << Said() << Shown();
    EXPECT_EQ(Column("SELECT source_id FROM bug ORDER BY dbid"), ids);
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"), titles);
    EXPECT_EQ(Column("SELECT name FROM keyword ORDER BY dbid"), names);
    EXPECT_EQ(Query("SELECT count(*) FROM zt_attachment"), std::to_string(2 * kCount));
}

TEST_P(RandomGuardedPackets, AreSetAsideAndLoadedAgain) {
    SCOPED_TRACE("seed " + std::to_string(m_seed));
    const auto names = Different(100);
    const auto ids = Different(100);
    std::vector<Fields> keywords;
    std::vector<Fields> bugs;
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < kCount; ++i) {
        keywords.push_back({{"name", Xml(names[i])}});
        titles.push_back("x" + Odd(29));
        bugs.push_back({{"source_id", Xml(ids[i])},
                        {"title", Xml(titles.back())},
                        {"keywords", List({names[i]})}});
    }
    m_options.rejects = m_folder.File("rejects");
    const auto rejected = Bugs("bugs", bugs, kMapped);
    EXPECT_EQ(Load(rejected), 1);
    EXPECT_FALSE(IsGuarded(Said()));
    EXPECT_EQ(Load(Data("keywords", "keyword", "name", keywords)), 0) << Said();
    const std::vector<std::string> rejects = {m_options.rejects.string()};
    m_options.rejects.clear();
    EXPECT_EQ(LoadAndVerify(rejects), 0) << Said() << Shown();
    EXPECT_EQ(Verify(rejected), 0) << Shown();
    EXPECT_EQ(Column("SELECT source_id FROM bug ORDER BY dbid"), ids);
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"), titles);
}

ON_EACH_ENGINE(RandomGuardedPackets);

}  // namespace
}  // namespace tool
