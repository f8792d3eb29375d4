#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "guarded_packets.h"
#include "recorddb/database.h"
#include "tool/commands/check_command.h"
#include "tool/guarded/guarded_text.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;

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

ON_EACH_ENGINE(GuardedPackets);

}  // namespace
}  // namespace tool
