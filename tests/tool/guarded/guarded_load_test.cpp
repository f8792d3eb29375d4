#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "random_records.h"
#include "recorddb/database.h"
#include "tool/commands/check_command.h"
#include "tool/guarded/guarded_text.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/xml_text.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;

// Values as they stand in guarded packets.
std::string Xml(const std::string& value, PacketPlace place = PacketPlace::Text) {
    return EscapedAttribute(Guarded(value, place));
}

std::string List(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
        list += (list.empty() ? "" : ",") + Xml(item, PacketPlace::ListItem);
    }
    return list;
}

std::string HistoryLineXml(const std::vector<std::string>& columns) {
    std::string line;
    for (const std::string& column : columns) {
        line += Xml(column, PacketPlace::HistoryColumn) + "\t";
    }
    line.back() = '\n';
    return line;
}

std::string AttachmentXml(const std::string& path, const std::string& description) {
    return "1\n" + Xml(path, PacketPlace::AttachmentLine) + "\n\n" +
           Xml(description, PacketPlace::AttachmentLine) + "\n";
}

constexpr const char* kMapped =
    "<importstate name=\"TRUE\"/><replacereflist name=\"TRUE\"/><duplicate_id name=\"twin\"/>"
    "<record_reference_mapping_list><m target_field=\"owner\" reference_field=\"email\"/>"
    "<m target_field=\"keywords\" reference_field=\"name\"/></record_reference_mapping_list>";

// Loads of guarded packets that were written by hand.
class GuardedPackets : public OnEachEngine<VerifyFixture> {
  protected:
    std::vector<std::string> Data(const std::string& name, const std::string& type,
                                  const std::string& key, const std::vector<Fields>& records,
                                  const std::string& more = "",
                                  const std::string& data = "record") {
        return {Configuration(name + "-configuration.xml", data, type, key, more),
                GuardedFile(name + ".xml", records)};
    }

    std::string GuardedFile(const std::string& name, const std::vector<Fields>& records) {
        std::string text(kPacketDeclaration);
        text += "\n" + std::string(kGuardedInstruction) + "\n<records>\n";
        for (const Fields& fields : records) {
            text += RecordXml(fields);
        }
        return m_folder.Write(name, text + "</records>\n");
    }

    std::vector<std::string> Bugs(const std::string& name, const std::vector<Fields>& records,
                                  const std::string& more = "",
                                  const std::string& data = "record") {
        return Data(name, "bug", "source_id", records, more, data);
    }

    std::vector<std::string> Column(const std::string& sql) {
        const auto database =
            recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
        auto& statement = database->GetConnection().Prepare(sql);
        const recorddb::sql::ResetGuard guard(statement);
        std::vector<std::string> values;
        while (statement.Step()) {
            values.emplace_back(statement.Text(0));
        }
        return values;
    }

    std::string Content(const std::string& path) const {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string MakeFile(const std::string& name) {
        std::ofstream(m_options.attachments / name) << "content of " << name;
        return name;
    }
};

TEST_P(GuardedPackets, BringValuesAsTheyAre) {
    const std::vector<std::string> titles = {"&lt;b&gt;",      "BLANK",    "a\x01\x1F",
                                             "\xEF\xB7\xAF r", " blanks ", "\xEF\xBF\xBF"};
    std::vector<Fields> records;
    for (const std::string& title : titles) {
        records.push_back({{"source_id", Xml(title)}, {"title", Xml(title)}});
    }
    EXPECT_EQ(LoadAndVerify(Bugs("bugs", records)), 0) << Shown();
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"), titles);
    EXPECT_EQ(Column("SELECT source_id FROM bug ORDER BY dbid"), titles);
}

TEST_P(GuardedPackets, BringReferencesThatAPacketWouldChange) {
    const std::string name = " a, &lt;\xEF\xB7\x90 ";
    auto sources = Data("keywords", "keyword", "name", {{{"name", Xml(name)}}, {{"name", "b"}}});
    sources = Together(
        sources, Data("users", "user", "login", {{{"login", "ann"}, {"email", Xml("BLANK")}}}));
    sources = Together(sources, Bugs("bugs",
                                     {{{"source_id", "1"},
                                       {"title", "A"},
                                       {"owner", Xml("BLANK", PacketPlace::Reference)},
                                       {"keywords", List({name, "b"})}}},
                                     kMapped));
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    EXPECT_EQ(Column("SELECT name FROM bug__keywords JOIN keyword ON dbid = target "
                     "ORDER BY position"),
              (std::vector<std::string>{name, "b"}));
    EXPECT_EQ(Query("SELECT login FROM bug JOIN \"user\" u ON u.dbid = owner"), "ann");
}

TEST_P(GuardedPackets, FindAndChangeTheRecordsThatTheyMean) {
    const std::string id = "\xEF\xB7\xAF&lt;BLANK";
    auto sources = Data("keywords", "keyword", "name",
                        {{{"name", Xml(id)}}, {{"name", "b"}}, {{"name", "c,d"}}});
    sources = Together(
        sources, Bugs("bugs",
                      {{{"source_id", Xml(id)}, {"title", "A"}, {"keywords", List({id, "c,d"})}},
                       {{"source_id", "copy"}, {"title", "B"}, {"twin", Xml(id)}}},
                      kMapped));
    sources = Together(
        sources, Bugs("changes",
                      {{{"source_id", Xml(id)}, {"title", Xml("&gt;")}, {"keywords", List({"b"})}}},
                      std::string(kMapped) + kUpdate));
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    EXPECT_EQ(Query("SELECT title FROM bug ORDER BY dbid"), "&gt;\nB");
    EXPECT_EQ(Query("SELECT name FROM bug__keywords JOIN keyword ON dbid = target"), "b");
    EXPECT_EQ(Query("SELECT count(*) FROM zt_duplicate"), "1");
}

TEST_P(GuardedPackets, BringHistoryWithWhatWouldCutItsLines) {
    const std::string user = "J\t\"&quot;\n\x02";
    const auto sources = Together(
        Bugs("bugs", {{{"source_id", "1"}, {"title", "A"}}}),
        Bugs("history",
             {{{"source_id", "1"},
               {"history",
                HistoryLineXml({"7", "2020-01-01", user, "do\rit", "\xEF\xBF\xBE", "N"})}}},
             "", "history"));
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    EXPECT_EQ(Column("SELECT user_name FROM zt_history"), std::vector<std::string>{user});
    EXPECT_EQ(Column("SELECT action_name FROM zt_history"), std::vector<std::string>{"do\rit"});
}

TEST_P(GuardedPackets, ReplaceAttachmentsOfTheSameName) {
    const std::string name = MakeFile("R&D; 5 &lt;\x03\t.txt");
    const std::string other = MakeFile("R&D;");
    const auto attach = [&](const std::string& file, const std::string& path,
                            const std::string& description) {
        return Bugs(file, {{{"source_id", "1"}, {"files", AttachmentXml(path, description)}}}, "",
                    "attachments");
    };
    auto sources = Together(Bugs("bugs", {{{"source_id", "1"}, {"title", "A"}}}),
                            attach("first", name, "one\nline, \x04 &apos; more"));
    sources = Together(sources, attach("second", other, ""));
    sources = Together(sources, attach("third", name, "two\n"));
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    EXPECT_EQ(Column("SELECT filename FROM zt_attachment ORDER BY filename"),
              (std::vector<std::string>{other, name}));
    EXPECT_EQ(Column("SELECT description FROM zt_attachment ORDER BY filename"),
              (std::vector<std::string>{"", "two\n"}));
}

TEST_P(GuardedPackets, AreSetAsideAndLoadedAgainAsSuch) {
    m_options.rejects = m_folder.File("rejects");
    const std::string title = "&lt;\x01,BLANK";
    EXPECT_EQ(Load(Bugs("bugs", {{{"source_id", Xml("\xEF\xB7\xAF&lt;")},
                                  {"title", Xml(title)},
                                  {"votes", Xml("m\x02ny &gt;")}}})),
              1);
    EXPECT_THAT(Said(), HasSubstr("m\\x02ny &gt;"));
    EXPECT_THAT(Said(), HasSubstr("\\ufdef&lt;"));
    const std::string records = m_options.rejects / "0001-records.xml";
    std::string text = Content(records);
    EXPECT_THAT(text, HasSubstr("\n<?ztimport guarded?>\n"));
    const std::string wrong = Xml("m\x02ny &gt;");
    text.replace(text.rfind(wrong), wrong.size(), "7");
    std::ofstream(records) << text;
    const std::vector<std::string> rejects = {m_options.rejects.string()};
    m_options.rejects.clear();
    EXPECT_EQ(LoadAndVerify(rejects), 0) << Said() << Shown();
    EXPECT_EQ(Column("SELECT title FROM bug"), std::vector<std::string>{title});
    EXPECT_EQ(Column("SELECT source_id FROM bug"), std::vector<std::string>{"\xEF\xB7\xAF&lt;"});
}

TEST_P(GuardedPackets, AreSetAsideApartFromOthers) {
    m_options.rejects = m_folder.File("rejects");
    const std::string configuration =
        Configuration("configuration.xml", "record", "bug", "source_id");
    const std::string odd = Xml("\x01");
    EXPECT_EQ(Load({configuration, GuardedFile("a.xml", {{{"source_id", odd}}}),
                    Records("b.xml", {{{"source_id", odd}}}),
                    GuardedFile("c.xml", {{{"source_id", "c"}}})}),
              1);
    EXPECT_THAT(Content(m_options.rejects / "0001-records.xml"), HasSubstr(kGuardedInstruction));
    EXPECT_THAT(Content(m_options.rejects / "0002-records.xml"),
                Not(HasSubstr(kGuardedInstruction)));
    EXPECT_THAT(Content(m_options.rejects / "0003-records.xml"), HasSubstr("c.xml"));
}

TEST_P(GuardedPackets, NameWhatARecordWaitsFor) {
    EXPECT_EQ(
        Load(Bugs("bugs",
                  {{{"source_id", "1"}, {"title", "A"}, {"keywords", List({" x,\x01", "y"})}}})),
        1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the keyword \" x,\\x01\" (field keywords)"));
}

TEST_P(GuardedPackets, LeaveTracesThatSayWhatIsMeant) {
    m_options.trace = m_folder.File("trace");
    EXPECT_EQ(Load(Bugs("bugs", {{{"source_id", Xml("&lt;")}, {"title", "A"}}},
                        std::string("<updateinsert name=\"TRUE\"/>") + kUpdate)),
              0)
        << Said();
    const std::string trace = Content(m_options.trace);
    EXPECT_THAT(trace, HasSubstr("value=&lt;\n"));
    EXPECT_FALSE(IsGuarded(trace));
}

TEST_P(GuardedPackets, AreToldApartFromPlainOnesInTheSameLoad) {
    const std::string configuration =
        Configuration("configuration.xml", "record", "bug", "source_id");
    const std::string odd = "\xEF\xB7\x94";
    EXPECT_EQ(
        LoadAndVerify({configuration, Records("plain.xml", {{{"source_id", "1"}, {"title", odd}}}),
                       GuardedFile("guarded.xml", {{{"source_id", "2"}, {"title", odd}}}),
                       Records("more.xml", {{{"source_id", "3"}, {"title", odd}}})}),
        0)
        << Shown();
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"),
              (std::vector<std::string>{odd, ",", odd}));
}

TEST_P(GuardedPackets, AreComparedByWhatTheyMean) {
    const auto sources = Bugs("bugs", {{{"source_id", Xml("&lt;")}, {"title", Xml("BLANK")}}});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE bug SET title = 'blank'");
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Differences(), "BUG00000001|title|BLANK|blank|");
}

TEST_P(GuardedPackets, LoseNothingInARehearsal) {
    auto sources = Data("keywords", "keyword", "name", {{{"name", Xml(" a,b ")}}});
    sources = Together(sources, Bugs("bugs", {{{"source_id", Xml("&lt;")},
                                               {"title", Xml("BLANK")},
                                               {"keywords", List({" a,b "})}}}));
    LoadOptions options = m_options;
    options.database = m_database;
    options.sources = sources;
    std::ostringstream out;
    EXPECT_EQ(RunCheck(options, out, out), 0) << out.str();
}

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

ON_EACH_ENGINE(GuardedPackets);
ON_EACH_ENGINE(RandomGuardedPackets);

}  // namespace
}  // namespace tool
