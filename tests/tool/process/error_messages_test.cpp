#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <stdexcept>

#include "engine_cases.h"
#include "process_fixture.h"
#include "recorddb/sql.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kSchemaFile =
    "record_types:\n  user:\n    key: [login]\n    fields:\n      login: {type: text}\n";

class ErrorMessages : public ProcessFixture {
  protected:
    using ProcessFixture::ProcessFixture;

    // A load of one file under a sound configuration.
    Answer LoadFile(const std::string& file) {
        return Run({"load", m_database,
                    Configuration("configuration.xml", "record", "user", "login"), file});
    }

    Answer InitWith(const std::string& schema) const {
        return Run({"init", m_folder.File("new.db"), m_folder.Write("new.yaml", schema)});
    }
};

class ErrorMessagesTest : public OnEachEngine<ErrorMessages> {};

ON_EACH_ENGINE(ErrorMessagesTest);

TEST_P(ErrorMessagesTest, AMissingSourceIsNamed) {
    const Answer answer = Run({"load", m_database, "nowhere.xml"});
    EXPECT_EQ(answer.code, 2);
    EXPECT_EQ(answer.text,
              "ztimport: nowhere.xml: there is no such file; check the path and its spelling\n");
}

struct NoPacket {
    const char* name;
    std::string content;
};

using FilesThatAreNoPackets = CasesOnEachEngine<ErrorMessages, NoPacket>;

TEST_P(FilesThatAreNoPackets, AreRefused) {
    const std::string file = m_folder.Write("file.xml", TheCase().content);
    const Answer answer = LoadFile(file);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text,
                AllOf(HasSubstr("ztimport: " + file + ": this is no packet: a packet is XML"),
                      HasSubstr("leave the file out")));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FilesThatAreNoPackets,
    OnEachEngineOf(testing::Values(NoPacket{"Empty", ""}, NoPacket{"Blank", " \n\t\n"},
                                   NoPacket{"Text", "source_id,title\na,A\n"},
                                   NoPacket{"Json", "{\"records\": [1, 2]}"},
                                   NoPacket{"Archive", std::string("PK\x03\x04\0\0\x08", 7)})),
    NamedWithEngine([](const NoPacket& file) { return file.name; }));

TEST_P(ErrorMessagesTest, AFragmentWithTextInFrontIsAPacketAllTheSame) {
    const Answer answer =
        LoadFile(m_folder.Write("file.xml", "one user: " + RecordXml({{"login", "ann"}})));
    EXPECT_EQ(answer.code, 0) << answer.text;
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
}

TEST_P(ErrorMessagesTest, AnotherEncodingIsNamedWithTheCommandThatConvertsIt) {
    const std::string file = m_folder.Write(
        "file.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><records></records>");
    const Answer answer = LoadFile(file);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, AllOf(HasSubstr(file + ": the file is in ISO-8859-1"),
                                   HasSubstr("iconv -f ISO-8859-1 -t UTF-8")));
}

TEST_P(ErrorMessagesTest, BytesThatAreNoTextCostTheirRecordAndAreNamed) {
    const std::string file =
        m_folder.Write("file.xml", "<records>\n" + RecordXml({{"login", "ann"}}) +
                                       RecordXml({{"login",
                                                   "b\xE9"
                                                   "a"}}) +
                                       "</records>");
    const Answer answer = LoadFile(file);
    EXPECT_EQ(answer.code, 1);
    EXPECT_THAT(answer.text, AllOf(HasSubstr(file + ", record 2"), HasSubstr("not UTF-8 at byte"),
                                   HasSubstr("(line 3)")));
}

TEST_P(ErrorMessagesTest, AnUnknownRecordTypeIsAnsweredWithThoseThereAre) {
    const std::string file = Configuration("configuration.xml", "record", "ticket", "source_id");
    const Answer answer = Run({"load", m_database, file});
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, AllOf(HasSubstr(file + ": "), HasSubstr("\"ticket\""),
                                   HasSubstr("Its record types are: user, keyword, bug.")));
}

struct SchemaMistake {
    const char* name;
    const char* schema;
    const char* place;
    const char* cause;
};

class SchemaMistakes : public ErrorMessages, public testing::WithParamInterface<SchemaMistake> {};

TEST_P(SchemaMistakes, AreNamedWithLineColumnAndWhatIsPossible) {
    const Answer answer = InitWith(GetParam().schema);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, AllOf(HasSubstr("new.yaml:" + std::string(GetParam().place) + ": "),
                                   HasSubstr(GetParam().cause)));
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("new.db")));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SchemaMistakes,
    testing::Values(
        SchemaMistake{"UnknownKey", "record_types:\n  user:\n    keys: [login]\n", "3:5",
                      "known keys are key, prefix, states, duplicate_state, spread, fields"},
        SchemaMistake{"UnknownType",
                      "record_types:\n  user:\n    key: [a]\n    fields:\n      a: {type: txt}\n",
                      "5:17", "types are text, multiline, integer"},
        SchemaMistake{"UnknownTarget",
                      "record_types:\n  user:\n    key: [a]\n    fields:\n      a: {type: text}\n"
                      "      b: {type: reference, to: usr}\n",
                      "6:32", "record types are user"},
        SchemaMistake{"NotYaml", "record_types: [\n", "2:1", "not valid YAML"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(ErrorMessages, AMissingSchemaFileIsNamed) {
    const Answer answer = Run({"init", m_folder.File("new.db"), "nowhere.yaml"});
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text,
                HasSubstr("nowhere.yaml: the file cannot be read: No such file or directory"));
}

TEST_P(ErrorMessagesTest, ADatabaseInTheWayIsNotReplaced) {
    const std::string before = Dump();
    const Answer answer = Run({"init", m_database, m_folder.Write("new.yaml", kSchemaFile)});
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text,
                HasSubstr(IsFile() ? m_database + ": the file exists already"
                                   : "there is a record database in this schema already"));
    EXPECT_EQ(Dump(), before);
}

TEST_F(ErrorMessages, AMissingDatabaseIsNamed) {
    const Answer answer = Run({"show", m_folder.File("nowhere.db")});
    EXPECT_EQ(answer.code, 3);
    EXPECT_EQ(answer.text, "ztimport: " + m_folder.File("nowhere.db") +
                               ": there is no such file; check the path, or make the database "
                               "first\n");
}

TEST_F(ErrorMessages, AFileThatIsNoDatabaseIsNamed) {
    const std::string file = m_folder.Write("notes.txt", std::string(5000, 'x'));
    const Answer answer = Run({"show", file});
    EXPECT_EQ(answer.code, 3);
    EXPECT_EQ(answer.text, "ztimport: " + file +
                               ": the file is not an SQLite database; name a database that "
                               "\"ztimport init\" has made\n");
}

TEST_P(ErrorMessagesTest, ADatabaseOfANewerVersionSaysWhichVersionIsNeeded) {
    Execute("UPDATE zt_schema SET format_version = 9, oldest_readable = 9, newest_readable = 9");
    const Answer answer =
        Run({"load", m_database, Configuration("c.xml", "record", "user", "login")});
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, AllOf(HasSubstr(recorddb::sql::ShownLocation(m_database)),
                                   HasSubstr("a newer version of this program"),
                                   HasSubstr("its format is 9"), HasSubstr("use that version")));
}

TEST_F(ErrorMessages, AMissingDirectoryForANewDatabaseIsNamed) {
    const Answer answer =
        Run({"init", m_folder.File("nowhere/new.db"), m_folder.Write("new.yaml", kSchemaFile)});
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text,
                HasSubstr("there is no directory " + m_folder.File("nowhere") + "; make it first"));
}

// Even the superuser then needs the permissions that a file grants.
void ObeyPermissions() {
    if (geteuid() == 0 && (prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) != 0 ||
                           prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) != 0)) {
        throw std::runtime_error("permissions cannot be enforced");
    }
}

class ReadOnlyDirectory : public ErrorMessages {
  protected:
    ReadOnlyDirectory() {
        std::filesystem::create_directory(Closed());
        std::filesystem::copy_file(m_database, Closed() + "/tracker.db");
        SetPermissions(std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    }
    // So that the folder can be removed.
    ~ReadOnlyDirectory() override { SetPermissions(std::filesystem::perms::owner_all); }

    void SetPermissions(std::filesystem::perms permissions) const {
        std::filesystem::permissions(Closed(), permissions);
    }

    std::string Closed() const { return m_folder.File("closed"); }

    Answer LoadWith(const std::string& option, const std::string& value) {
        return Run(
            {"load", m_database, option, value, Configuration("c.xml", "record", "user", "login")},
            ObeyPermissions);
    }
};

TEST_F(ReadOnlyDirectory, TakesNoNewDatabase) {
    const Answer answer = Run(
        {"init", Closed() + "/new.db", m_folder.Write("new.yaml", kSchemaFile)}, ObeyPermissions);
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, AllOf(HasSubstr(Closed() +
                                             "/new.db: nothing can be written to the "
                                             "directory " +
                                             Closed()),
                                   HasSubstr("permission")));
}

TEST_F(ReadOnlyDirectory, TakesNoLoad) {
    const Answer answer =
        Run({"load", Closed() + "/tracker.db", Configuration("c.xml", "record", "user", "login")},
            ObeyPermissions);
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, AllOf(StartsWith("ztimport: "), HasSubstr("permission to write")));
}

TEST_F(ReadOnlyDirectory, TakesNoRejects) {
    const Answer answer = LoadWith("--rejects", Closed() + "/rejects");
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr(Closed() + ": rejected records cannot be written here"));
}

TEST_F(ReadOnlyDirectory, TakesNoReport) {
    const Answer answer = LoadWith("--report", Closed() + "/report.json");
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text,
                AllOf(HasSubstr(Closed() + "/report.json"), HasSubstr("cannot be written here")));
}

TEST_F(ReadOnlyDirectory, TakesNoTraces) {
    const Answer answer = LoadWith("--trace", Closed() + "/traces");
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("cannot be written; name another file or folder"));
}

TEST_F(ReadOnlyDirectory, IsReadWithImmutableOnly) {
    const Answer refused = Run({"show", Closed() + "/tracker.db"}, ObeyPermissions);
    EXPECT_EQ(refused.code, 3);
    EXPECT_THAT(refused.text, HasSubstr("--immutable"));
    const Answer read = Run({"show", Closed() + "/tracker.db", "--immutable"}, ObeyPermissions);
    EXPECT_EQ(read.code, 0) << read.text;
}

}  // namespace
}  // namespace tool
