#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <vector>

#include "interrupting_sink.h"
#include "load_fixture.h"
#include "ordinary_user.h"
#include "recorddb/errors.h"
#include "tool/commands/command_line.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr const char* kPlaces = R"(record_types:
  place:
    key: [town, street]
    fields:
      town: {type: text}
      street: {type: text}
  visit:
    key: [number]
    fields:
      number: {type: text}
      place: {type: reference, to: place}
)";

// Options that bear on what single records may hold, as they are given on the command line.
class RecordOptions : public LoadFixture {
  protected:
    using LoadFixture::LoadFixture;

    struct Answer {
        int code;
        std::string text;
    };

    static Answer Run(std::vector<std::string> arguments) {
        std::vector<const char*> words = {"ztimport"};
        for (const std::string& argument : arguments) {
            words.push_back(argument.c_str());
        }
        std::ostringstream text;
        const int code = RunCommandLine(static_cast<int>(words.size()), words.data(), text, text);
        return {code, text.str()};
    }

    // A bug with one attachment of five bytes.
    std::vector<std::string> Attachment() {
        m_folder.Write("note.txt", "hello");
        return {
            Configuration("bugs-configuration.xml", "record", "bug", "source_id"),
            Records("bugs.xml",
                    {{{"source_id", "a"}, {"title", "A"}, {"files", "1\nnote.txt\n5\na note"}}})};
    }

    Answer RunOn(const std::string& command, const std::vector<std::string>& sources,
                 const std::vector<std::string>& options) const {
        std::vector<std::string> arguments = {command, m_database};
        arguments.insert(arguments.end(), sources.begin(), sources.end());
        arguments.insert(arguments.end(), {"--attachments", m_folder.Path().string()});
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
};

class RecordOptionsTest : public OnEachEngine<RecordOptions> {};

ON_EACH_ENGINE(RecordOptionsTest);

// The same with visits to places.
class VisitOptions : public RecordOptions {
  protected:
    explicit VisitOptions(Engine engine) : RecordOptions(engine, kPlaces) {}

    std::vector<std::string> Visits(const std::string& place) {
        Load({Configuration("places-configuration.xml", "record", "place", "town"),
              Records("places.xml", {{{"town", "a b c"}, {"street", "d e"}}})});
        return {
            Configuration("visits-configuration.xml", "record", "visit", "number"),
            Records("visits.xml",
                    {{{"number", "1"}}, {{"number", "2"}, {"place", place}}, {{"number", "3"}}})};
    }
};

class VisitOptionsTest : public OnEachEngine<VisitOptions> {};

ON_EACH_ENGINE(VisitOptionsTest);

TEST_P(RecordOptionsTest, AttachmentsBeyondTheirLimitAreRejectedWithRecordFieldAndOption) {
    const auto sources = Attachment();
    for (const std::string command : {"check", "load"}) {
        const Answer answer = RunOn(command, sources, {"--max-attachment-size", "4"});
        EXPECT_EQ(answer.code, 1);
        EXPECT_THAT(answer.text,
                    AllOf(HasSubstr("bugs.xml, record 1 (a), line 3: "),
                          HasSubstr("The file \"note.txt\" cannot be attached to the field "
                                    "\"files\": it has 5 bytes, and attachments may have 4 "
                                    "(--max-attachment-size).")));
    }
    EXPECT_EQ(Query("SELECT count(*) FROM zt_content"), "0");
    EXPECT_EQ(RunOn("load", sources, {"--max-attachment-size", "5", "--retry-rejected"}).code, 0);
}

TEST_P(RecordOptionsTest, VerifyHasTheLimitOfAttachmentsToo) {
    const auto sources = Attachment();
    EXPECT_EQ(RunOn("load", sources, {}).code, 0);
    EXPECT_EQ(RunOn("verify", sources, {}).code, 0);
    const Answer answer = RunOn("verify", sources, {"--max-attachment-size", "4"});
    EXPECT_EQ(answer.code, 1);
    EXPECT_THAT(answer.text, HasSubstr("attachments may have 4 (--max-attachment-size)"));
}

TEST_P(VisitOptionsTest, ReferencesThatCanBeReadInTooManyWaysAreRejected) {
    const auto sources = Visits("a b c d e");
    const Answer answer = RunOn("load", sources, {"--max-reference-tries", "3"});
    EXPECT_EQ(answer.code, 1);
    EXPECT_THAT(answer.text, AllOf(HasSubstr("record 2 (2)"), HasSubstr("\"place\""),
                                   HasSubstr("the 3 that are tried (--max-reference-tries)")));
    EXPECT_EQ(RunOn("load", sources, {"--retry-rejected"}).code, 0);
    EXPECT_EQ(RunOn("verify", sources, {}).code, 0);
    EXPECT_THAT(RunOn("verify", sources, {"--max-reference-tries", "3"}).text,
                HasSubstr("in more ways than are tried (--max-reference-tries)"));
}

TEST_P(VisitOptionsTest, ASearchThatAnInterruptEndsRejectsNothing) {
    const auto sources = Visits("a b c d e");
    {
        const InterruptingSink sink(u"SetupFieldValues begins", 2);
        EXPECT_EQ(RunOn("load", sources, {}).code, 128 + SIGTERM);
    }
    EXPECT_EQ(Query("SELECT number FROM visit"), "1");
    EXPECT_EQ(RunOn("load", sources, {}).code, 0);
    EXPECT_EQ(Query("SELECT number FROM visit ORDER BY number"), "1\n2\n3");
}

TEST_F(RecordOptions, ADatabaseInAClosedFolderIsReadAsImmutableOnlyWhenTold) {
    const auto sources = Attachment();
    EXPECT_EQ(RunOn("load", sources, {}).code, 0);
    std::filesystem::permissions(m_folder.Path(), static_cast<std::filesystem::perms>(0555));
    {
        const OrdinaryUser user;
        EXPECT_THROW(Run({"show", m_database}), recorddb::sql::Error);
        EXPECT_THROW(RunOn("verify", sources, {}), recorddb::sql::Error);
        EXPECT_THAT(Run({"show", m_database, "--immutable"}).text, HasSubstr("bug              1"));
        EXPECT_EQ(RunOn("verify", sources, {"--immutable"}).code, 0);
    }
    std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace tool
