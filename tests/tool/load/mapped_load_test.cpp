#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "load_fixture.h"
#include "tool/commands/check_command.h"
#include "tool/commands/verify_command.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr const char* kMap = R"(map: 1
sources: {bugs: {files: bugs.csv}}
steps:
- {records: user, source: bugs, each: [Who], same_key: first, key: login, fields: {login: .}}
- {records: bug, source: bugs, key: source_id, fields: {source_id: Nr, title: Title, owner: Who}}
)";

class MappedLoad : public OnEachEngine<LoadFixture> {
  protected:
    MappedLoad() { m_options.map = m_folder.Write("map.yaml", kMap); }

    int Verify(const std::string& source) {
        VerifyOptions options;
        options.database = m_database;
        options.map = m_options.map;
        options.sources = {source};
        options.report = m_options.report;
        options.html = m_options.html;
        std::ostringstream out;
        std::ostringstream err;
        const int code = RunVerify(options, out, err);
        m_verified = out.str() + err.str();
        return code;
    }

    // `text` with `to` wherever `from` stands in it.
    static std::string With(std::string text, const std::string& from, const std::string& to) {
        for (std::size_t at = text.find(from); at != text.npos;
             at = text.find(from, at + to.size())) {
            text.replace(at, from.size(), to);
        }
        return text;
    }

    static std::string Content(const std::filesystem::path& path) {
        std::ostringstream content;
        content << std::ifstream(path).rdbuf();
        return content.str();
    }

    std::string m_verified;
};

ON_EACH_ENGINE(MappedLoad);

TEST_P(MappedLoad, MakesRecordsOfRowsOnce) {
    const std::string source = m_folder.Write("bugs.csv", "Nr,Title,Who\n1,a&lt;b,ann\n2,c,ann\n");
    EXPECT_EQ(Load({source}), 0) << Said();
    EXPECT_EQ(Query("SELECT title FROM bug ORDER BY source_id"), "a&lt;b\nc");
    EXPECT_EQ(Query("SELECT count(*) FROM \"user\""), "1");
    EXPECT_EQ(Load({source}), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded (2 records)"));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "2");
    EXPECT_EQ(Verify(source), 0) << m_verified;
    EXPECT_THAT(m_verified, HasSubstr("Verified: everything in the sources is in the database."));
}

TEST_P(MappedLoad, SetsRejectedRowsAsideWithTheirPlaces) {
    m_options.rejects = m_folder.File("rejects");
    const std::string source = m_folder.Write("bugs.csv", "Nr,Title,Who\n1,a,ann\n1,b,ann\n2\n");
    EXPECT_EQ(Load({source}), 1);
    EXPECT_THAT(Said(), HasSubstr("bugs.csv, row 2 (1), line 3: its key \"1\" came before, in "));
    EXPECT_THAT(Said(), HasSubstr("bugs.csv, row 3, line 4: it has 1 cell, and the header has 3"));
    EXPECT_EQ(Query("SELECT title FROM bug"), "a");
    EXPECT_TRUE(std::filesystem::exists(m_options.rejects / "0002-records.xml"));
}

TEST_P(MappedLoad, WritesTheRowsOfRejectedRecordsAsTheyStood) {
    m_options.rejectedRows = m_folder.File("rows.csv");
    const std::string source =
        m_folder.Write("bugs.csv", "Nr,Title,Who\n1,a,ann\n1,\"b \"\"x\"\",\ny\",ann\n2\n3,,\n");
    EXPECT_EQ(Load({source}), 1);
    std::ifstream rows(m_options.rejectedRows);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(rows), {}),
              "Nr,Title,Who\n2\n1,\"b \"\"x\"\",\ny\",ann\n3,,\n");
}

TEST_P(MappedLoad, WritesEachRejectedElementOnALineOfItsOwn) {
    std::string map = kMap;
    m_options.map = m_folder.Write("map.yaml", map.replace(map.find("bugs.csv"), 8, "bugs.json"));
    m_options.rejectedRows = m_folder.File("rows.jsonl");
    const std::string source = m_folder.Write("bugs.json",
                                              "[\n  {\n    \"Nr\": 1,\n    \"Title\": \"a\",\n"
                                              "    \"Who\": \"ann\"\n  },\n  {\r\n    \"Nr\": 1,\n"
                                              "    \"Title\": \"b\\nc  d\"\n  }\n]\n");
    EXPECT_EQ(Load({source}), 1) << Said();
    std::ifstream rows(m_options.rejectedRows);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(rows), {}),
              "{ \"Nr\": 1, \"Title\": \"b\\nc  d\" }\n");
}

TEST_P(MappedLoad, WarnsOfColumnsThatNobodyReads) {
    const std::string source = m_folder.Write("bugs.csv", "Nr,Title,Who,Cost\n1,a,ann,7\n");
    EXPECT_EQ(Load({source}), 0);
    EXPECT_THAT(Said(), HasSubstr("warning: "));
    EXPECT_THAT(Said(), HasSubstr("no step reads Cost of bugs (1 value, first in "));
    EXPECT_THAT(Said(), HasSubstr("ignore: [\"Cost\"]   # of source bugs"));
    EXPECT_EQ(Verify(source), 1);
    EXPECT_THAT(m_verified, HasSubstr("NOT verified"));
    std::ostringstream out;
    std::ostringstream err;
    m_options.sources = {source};
    EXPECT_EQ(RunCheck(m_options, out, err), 1);
}

TEST_P(MappedLoad, VerifiesButForWhatTheMapLeavesOut) {
    std::string map = kMap;
    map.replace(map.find("files: bugs.csv"), 15, "files: bugs.csv, ignore: Cost");
    m_folder.Write("map.yaml", map);
    const std::string source = m_folder.Write("bugs.csv", "Nr,Title,Who,Cost\n1,a,ann,7\n");
    EXPECT_EQ(Load({source}), 0);
    EXPECT_EQ(Verify(source), 0) << m_verified;
    EXPECT_THAT(m_verified, HasSubstr("Verified but for 1 value left out by the map"));
}

TEST_P(MappedLoad, TellsWhatTheMapFoundInEveryReport) {
    m_options.report = m_folder.File("report.json");
    m_options.html = m_folder.File("page.html");
    const std::string source =
        m_folder.Write("bugs.csv", "Nr,Title,Who,Cost\n1,a,ann,7\n1,b,ann,8\n");
    const auto isTold =
        AllOf(HasSubstr(R"("findings":[)"),
              HasSubstr(R"({"weight":"loss","kind":"unread-address","count":2,"place":")"),
              HasSubstr(R"({"weight":"count","kind":"repeated-key","count":1,)"),
              HasSubstr(R"("paste":"ignore: [\"Cost\"])"));
    const auto isShown = AllOf(HasSubstr("What the map found"), HasSubstr("no step reads Cost"),
                               HasSubstr("1 key came again, and the first of each was taken"));
    EXPECT_EQ(Load({source}), 1);
    EXPECT_THAT(Content(m_options.report), AllOf(isTold, HasSubstr(R"(,"unit":"row"}])")));
    EXPECT_THAT(Content(m_options.html), AllOf(isShown, HasSubstr(">row 2<")));
    EXPECT_EQ(Verify(source), 1);
    EXPECT_THAT(Content(m_options.report), AllOf(isTold, HasSubstr(R"(,"unit":"row"})")));
    EXPECT_THAT(Content(m_options.html), isShown);
    EXPECT_THAT(m_verified, HasSubstr("1 key came again"));
}

TEST_P(MappedLoad, FindsWhatChangedInTheDatabase) {
    const std::string source = m_folder.Write("bugs.csv", "Nr,Title,Who\n1,a,ann\n");
    EXPECT_EQ(Load({source}), 0);
    Execute("UPDATE bug SET title = 'b'");
    EXPECT_EQ(Verify(source), 1);
    EXPECT_THAT(m_verified, HasSubstr("source \"a\", database \"b\""));
}

// That a map has changed shows in the records of a step, in its configuration, or in its name.
TEST_P(MappedLoad, RefusesToGoOnWithAnotherMap) {
    m_options.maxRejects = 0;
    const std::string source =
        m_folder.Write("bugs.csv", "Nr,Title,Who\n1,a,ann\n1,b,ann\n2,c,d\n");
    Load({source});
    EXPECT_THAT(Said(), HasSubstr("Stopped"));
    const std::string map = kMap;
    const std::string upper = With(map, "title: Title", "title: {from: Title, case: upper}");
    for (const std::string& other :
         {upper, With(map, "{records: bug", "{records: bug, mode: update_or_create"),
          With(With(upper, "{bugs:", "{others:"), "source: bugs", "source: others")}) {
        SCOPED_TRACE(other);
        m_folder.Write("map.yaml", other);
        try {
            Load({source});
            ADD_FAILURE() << Said();
        } catch (const SourceChanged& error) {
            EXPECT_THAT(error.what(), HasSubstr("bug from bugs: the map, or a file that it reads, "
                                                "has changed since"));
            EXPECT_THAT(error.what(), HasSubstr("make a new database"));
        }
    }
    m_folder.Write("map.yaml", map);
    Load({source});
    EXPECT_THAT(Said(), HasSubstr("goes on behind record 2"));
}

}  // namespace
}  // namespace tool
