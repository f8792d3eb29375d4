#include <gmock/gmock.h>

#include <fstream>

#include "check_fixture.h"
#include "tool/losses/loss.h"

namespace tool {
namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

// What a rehearsal says that the load would drop silently.
class CheckLossesTest : public OnEachEngine<CheckFixture> {};

TEST_P(CheckLossesTest, TellsEachLossWithItsPlace) {
    EXPECT_EQ(Check(BugsAsText("<records>\n<record><f name='source_id'>core-25</f>"
                               "<f name='title'>A</f>\n<f name='log'>1\t\t\t\t\t\t</f></record>"
                               "</records>")),
              1);
    EXPECT_THAT(Said(), ContainsRegex("would be lost: .*record-bugs.xml, record 1 \\(core-25\\), "
                                      "line 3, field log: line 1 of the value"));
    EXPECT_THAT(Said(), EndsWith("history lines of seven or more columns: 1\n"
                                 "1 value would be lost.\n"));
}

TEST_P(CheckLossesTest, ReportsEachLoss) {
    const auto report = ReportOf([&] {
        Check(BugsAsText("<record><f name='source_id'>a</f><f name='title'>A&#10;</f></record>"));
    });
    ASSERT_EQ(report["losses"].size(), 1U);
    const auto& loss = report["losses"][0];
    EXPECT_EQ(loss["kind"], "changed-text");
    EXPECT_EQ(loss["file"], m_folder.File("record-bugs.xml"));
    EXPECT_EQ(loss["record"], 1);
    EXPECT_EQ(loss["line"], 1);
    EXPECT_EQ(loss["source_id"], "a");
    EXPECT_EQ(loss["field"], "title");
    EXPECT_EQ(loss["text"], "the reference \"&#10;\" stays as it is written");
    EXPECT_EQ(report["rejects"].size(), 0U);
}

TEST_P(CheckLossesTest, AReportOfALoadHasNoLosses) {
    const auto report = ReportOf([&] { Load(Bugs({{{"source_id", "a"}, {"title", "A"}}})); });
    EXPECT_FALSE(report.contains("losses"));
}

TEST_P(CheckLossesTest, FindsEveryKindOfLoss) {
    const std::string manyEntries = [] {
        std::string text;
        for (int i = 0; i < 502; ++i) {
            text += "1\t2020-01-01\tann\tsubmit\tnone\tNEW\n";
        }
        return text;
    }();
    const auto record = [](const std::string& fields) {
        return "<record><f name='title'>A</f>" + fields + "</record>";
    };
    const std::pair<std::string, LossKind> cases[] = {
        {record("<f name='log'>1\t\t\t\t\t\t</f>"), LossKind::LongHistoryLine},
        {record("<f name='log'>" + manyEntries + "</f>"), LossKind::HistoryBeyondLimit},
        {record("<f name='files'>1\na</f>"), LossKind::IncompleteAttachment},
        {"<record id='1'><f name='title'>A</f></record>" + record(""), LossKind::UnseenRecord},
        {record("<f>x</f>"), LossKind::NamelessField},
        {record("<f name='votes'>1<f name='source_id'>x</f></f>"), LossKind::NestedField},
        {record("text<f name='votes'></f>"), LossKind::UnreadField},
        {record("<f name='source_id'>&amp;lt;</f>"), LossKind::ChangedText},
        {record("<f name='id'>BUG7</f>"), LossKind::SkippedField},
        {record("<f name='title'>B</f>"), LossKind::RepeatedField},
        {record("<f name='votes'>BLANK</f>"), LossKind::ClearedValue},
        {"<records/>", LossKind::EmptyPacket},
        {"<records>" + record(""), LossKind::CutShort},
        {"<records>" + record("") + "\xE4</records>", LossKind::OutsideRecords},
    };
    for (const auto& [xml, kind] : cases) {
        EXPECT_THAT(LossKinds(BugsAsText(xml)), testing::ElementsAre(LossKindName(kind)))
            << LossKindName(kind);
    }
    EXPECT_THAT(LossKinds(BugsAsText(record(""), "history")),
                testing::ElementsAre(LossKindName(LossKind::UnusedField)));
    EXPECT_THAT(LossKinds(Bugs({{{"title", "A"}}}, "", "nothing")),
                testing::ElementsAre(LossKindName(LossKind::NothingImported)));
    EXPECT_THAT(LossKinds(Bugs({{{"title", "A"}}},
                               "<record_reference_mapping_list><m target_field='title' "
                               "reference_field='login'/></record_reference_mapping_list>")),
                testing::ElementsAre(LossKindName(LossKind::UnusedMapping)));
    EXPECT_THAT(LossKinds({Bugs({{{"title", "A"}}})[1]}),
                testing::ElementsAre(LossKindName(LossKind::NoConfiguration)));
}

TEST_P(CheckLossesTest, APacketThatIsCutShortIsNoCleanOne) {
    EXPECT_EQ(Check(BugsAsText("<records>\n<record><f name='title'>A</f></record>\n")), 1);
    EXPECT_THAT(Said(), HasSubstr("bugs.xml, line 3: the packet is cut short: the element "
                                  "<records>, which opens on line 1, does not end; records may be "
                                  "missing, so export it anew"));
    EXPECT_THAT(Said(), HasSubstr("1 packet would be imported although cut short."));
}

TEST_P(CheckLossesTest, TellsOfKeysThatNoReferenceCanName) {
    const auto keywords = [this](const std::string& file, const std::vector<std::string>& names) {
        std::vector<Fields> records;
        for (const std::string& name : names) {
            records.push_back({{"name", name}});
        }
        return std::vector<std::string>{Configuration("k.xml", "record", "keyword", "name"),
                                        Records(file, records)};
    };
    EXPECT_EQ(Check(keywords("keywords.xml", {"web", "web ", " ui", "a,b", "a b"})), 1);
    EXPECT_THAT(Said(), HasSubstr("record 2 (web ), line 4, field name: \"web \" has blanks around "
                                  "it, and references are trimmed"));
    EXPECT_THAT(Said(), HasSubstr("record 3 ( ui), line 5, field name: "));
    EXPECT_THAT(Said(), HasSubstr("record 4 (a,b), line 6, field name: \"a,b\" holds a comma"));
    EXPECT_THAT(Said(), HasSubstr("keys that no reference can name: 3"));
    EXPECT_THAT(Said(), HasSubstr("3 keys would be out of reach of references."));
}

TEST_P(CheckLossesTest, OnlyKeysThatAreReferredToMatter) {
    EXPECT_EQ(Check(Bugs({{{"source_id", "a, b "}, {"title", "A"}}})), 0) << Said();
    EXPECT_EQ(Check({Configuration("u.xml", "record", "user", "email"),
                     Records("users.xml", {{{"login", "ann,b"}, {"email", "ann"}}})}),
              0)
        << Said();
}

TEST_P(CheckLossesTest, TellsOfReferencesThatMeanAnotherRecord) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'ann ', 'b')");
    Execute(
        "INSERT INTO keyword (dbid, name) VALUES (1, 'a'), (2, 'b'), "
        "(3, 'a,b'), (4, ' b')");
    const auto check = [this](const std::string& owner, const std::string& keywords) {
        return Check(Bugs({{{"title", "A"}, {"owner", owner}, {"keywords", keywords}}}));
    };
    EXPECT_EQ(check("ann", "a"), 0) << Said();
    EXPECT_EQ(check(" ann", "a"), 0) << Said();
    EXPECT_EQ(check("ann ", "a"), 1);
    EXPECT_THAT(Said(), HasSubstr("field owner: \"ann \" is taken for \"ann\", and there is a user "
                                  "whose login is \"ann \", which no reference can name"));
    EXPECT_EQ(check("ann", "b,a"), 0) << Said();
    EXPECT_EQ(check("ann", "a,b"), 1);
    EXPECT_THAT(Said(), HasSubstr("field keywords: \"a,b\" is taken for several items"));
    EXPECT_EQ(check("ann", "a, b"), 1);
    EXPECT_THAT(Said(), HasSubstr("field keywords: \" b\" is taken for \"b\""));
}

TEST_P(CheckLossesTest, TellsOfAnUpdateThatWouldClearAReferenceToARecordCalledBlank) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}}));
    const auto update =
        Bugs({{{"source_id", "a"}, {"owner", "BLANK"}}}, "<updaterecord name=\"TRUE\"/>");
    EXPECT_EQ(Check(update), 0) << Said();
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'BLANK', 'b')");
    EXPECT_EQ(Check(update), 1);
    EXPECT_THAT(Said(), HasSubstr("field owner: \"BLANK\" is taken for no value, and there is a "
                                  "user whose login is \"BLANK\", which no reference can name"));
}

TEST_P(CheckLossesTest, TakesBlankInAListForAnItem) {
    Execute("INSERT INTO keyword (dbid, name) VALUES (1, 'BLANK')");
    EXPECT_EQ(Check(Bugs({{{"title", "A"}, {"keywords", "BLANK"}}})), 0) << Said();
}

TEST_P(CheckLossesTest, TellsOfReferencesThatAMappingTakesForOthers) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'bob', ' a')");
    EXPECT_EQ(Check(Bugs({{{"title", "A"}, {"owner", " a"}}},
                         "<record_reference_mapping_list><m target_field='owner' "
                         "reference_field='email'/></record_reference_mapping_list>")),
              1);
    EXPECT_THAT(Said(), HasSubstr("there is a user whose email is \" a\""));
}

TEST_P(CheckLossesTest, FindsTheLossesOfRecordsThatAreLoadedAlready) {
    const auto sources = BugsAsText("<record><f name='title'>A</f><f name='id'>7</f></record>");
    Load(sources);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("fields of a type that is never written: 1"));
    EXPECT_THAT(Said(), HasSubstr("1 skipped"));
}

TEST_P(CheckLossesTest, FindsTheLossesOfPacketsThatAreHandedOverWhole) {
    m_options.wholePackets = true;
    const auto sources = BugsAsText(
        "<records><record><f name='title'>A</f></record>"
        "<record><f name='title'>A</f><f name='id'>7</f></record>"
        "</records>");
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("record 2, line 1, field id"));
    EXPECT_THAT(Said(), HasSubstr("2 would be created"));
    Load(sources);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("1 value would be lost."));
}

TEST_P(CheckLossesTest, ShowsTwentyLossesOfEachKindAndCountsTheOthers) {
    std::string xml;
    for (int i = 0; i < 25; ++i) {
        xml += "<record><f name='title'>A</f><f name='id'>7</f></record>\n";
    }
    const auto report = ReportOf([&] {
        Check(BugsAsText(xml + "<record><f name='title'>A</f><f name='votes'>BLANK</f></record>"));
    });
    EXPECT_EQ(report["losses"].size(), 26U);
    EXPECT_THAT(Said(), HasSubstr("record 20, line 20, field id"));
    EXPECT_THAT(Said(), Not(HasSubstr("record 21, line 21, field id")));
    EXPECT_THAT(Said(), HasSubstr("would be lost: further fields of a type that is never written "
                                  "are counted; --report lists all\n"));
    EXPECT_THAT(Said(), HasSubstr("record 26, line 26, field votes"));
    EXPECT_THAT(Said(), HasSubstr("fields of a type that is never written: 25\n"
                                  "values BLANK in new records: 1\n"
                                  "26 values would be lost.\n"));
}

ON_EACH_ENGINE(CheckLossesTest);

}  // namespace
}  // namespace tool
