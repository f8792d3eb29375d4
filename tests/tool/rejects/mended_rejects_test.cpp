#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "load_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;

constexpr const char* kLine = "\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW";

// A load that rejects records of one data type, the folder they were set aside in, and the load of
// that folder.
class MendedRejects : public OnEachEngine<LoadFixture> {
  protected:
    MendedRejects() {
        m_options.attachments = m_folder.Path();
        m_folder.Write("there.txt", "there");
        Load({Configuration("bugs-configuration.xml", "record", "bug", "source_id"),
              Records("bugs.xml", {{{"source_id", "a"}, {"title", "A"}},
                                   {{"source_id", "b"}, {"title", "B"}}})});
    }

    int LoadWithRejects(const std::vector<Fields>& records, std::string_view data,
                        std::string_view more = "") {
        m_options.rejects = m_folder.File("rejects");
        const int code = Load({Configuration("configuration.xml", data, "bug", "source_id", more),
                               Records("data.xml", records)});
        m_options.rejects.clear();
        return code;
    }

    std::string Content(const std::string& name) const {
        std::ifstream file(m_folder.File(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Replaces a text in the records that were set aside, as a person would.
    void Mend(const std::string& wrong, const std::string& right,
              const std::string& name = "rejects/0001-records.xml") const {
        std::string text = Content(name);
        const std::size_t at = text.rfind(wrong);
        ASSERT_NE(at, std::string::npos) << text;
        text.replace(at, wrong.size(), right);
        m_folder.Write(name, text);
    }

    int LoadRejects() { return Load({m_folder.File("rejects")}); }
};

TEST_P(MendedRejects, AreCreated) {
    EXPECT_EQ(LoadWithRejects({{{"source_id", "c"}, {"title", "C"}, {"votes", "many"}},
                               {{"source_id", "d"}, {"title", "D"}, {"votes", "4"}}},
                              "record"),
              1);
    Mend("many", "3");
    EXPECT_EQ(LoadRejects(), 0) << Said();
    EXPECT_EQ(Query("SELECT source_id || votes FROM bug WHERE votes > 0 ORDER BY source_id"),
              "c3\nd4");
}

TEST_P(MendedRejects, AreUpdated) {
    EXPECT_EQ(LoadWithRejects(
                  {{{"source_id", "a"}, {"votes", "many"}}, {{"source_id", "b"}, {"votes", "4"}}},
                  "record", "<updaterecord name=\"TRUE\"/>"),
              1);
    Mend("many", "3");
    EXPECT_EQ(LoadRejects(), 0) << Said();
    EXPECT_EQ(Query("SELECT source_id || votes FROM bug ORDER BY source_id"), "a3\nb4");
}

TEST_P(MendedRejects, GetTheirHistory) {
    EXPECT_EQ(LoadWithRejects({{{"source_id", "a"}, {"history", "1\tnever\tu\tsubmit\tnone\tNEW"}},
                               {{"source_id", "b"}, {"history", std::string("1") + kLine}}},
                              "history"),
              1);
    EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), "1");
    Mend("never", "2020-01-01 00:00:00");
    EXPECT_EQ(LoadRejects(), 0) << Said();
    EXPECT_EQ(Query("SELECT count(DISTINCT record) FROM zt_history"), "2");
}

TEST_P(MendedRejects, GetTheirAttachments) {
    EXPECT_EQ(LoadWithRejects({{{"source_id", "a"}, {"files", "1\nmissing.txt\n5\nit"}},
                               {{"source_id", "b"}, {"files", "1\nthere.txt\n5\nit"}}},
                              "attachments"),
              1);
    Mend("missing.txt", "there.txt");
    EXPECT_EQ(LoadRejects(), 0) << Said();
    EXPECT_EQ(Query("SELECT count(DISTINCT record) FROM zt_attachment"), "2");
}

TEST_P(MendedRejects, OfSeveralConfigurationsAreLoadedEachUnderItsOwn) {
    LoadWithRejects({{{"source_id", "c"}, {"title", "C"}, {"votes", "many"}}}, "record");
    m_options.rejects = m_folder.File("rejects");
    Load({Configuration("history-configuration.xml", "history", "bug", "source_id"),
          Records("history.xml", {{{"source_id", "c"}, {"history", std::string("1") + kLine}}})});
    m_options.rejects.clear();
    Mend("many", "3");
    EXPECT_EQ(LoadRejects(), 0) << Said();
    EXPECT_EQ(Query("SELECT votes FROM bug JOIN zt_history ON record = dbid"), "3");
}

TEST_P(MendedRejects, ThatAreStillWrongAreRejectedAgain) {
    LoadWithRejects({{{"source_id", "c"}, {"title", "C"}, {"votes", "many"}}}, "record");
    Mend("many", "some");
    EXPECT_EQ(LoadRejects(), 1);
    EXPECT_THAT(Said(), HasSubstr("\"some\""));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "2");
}

TEST_P(MendedRejects, ThatAreStillWrongAreSetAsideAnewBesideTheMendedFile) {
    LoadWithRejects({{{"source_id", "c"}, {"title", "C"}, {"votes", "many"}},
                     {{"source_id", "d"}, {"title", "D"}, {"votes", "some"}}},
                    "record");
    Mend("many", "3");
    const std::string mended = Content("rejects/0001-records.xml");
    m_options.rejects = m_folder.File("rejects");
    EXPECT_EQ(LoadRejects(), 1);
    EXPECT_EQ(Content("rejects/0001-records.xml"), mended);
    Mend("some", "4", "rejects/0002-records.xml");
    LoadRejects();
    EXPECT_EQ(Query("SELECT source_id || votes FROM bug WHERE votes > 0 ORDER BY source_id"),
              "c3\nd4");
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("rejects/0003-records.xml")));
}

ON_EACH_ENGINE(MendedRejects);

}  // namespace
}  // namespace tool
