#include "tool/commands/output_guard.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

#include "process_fixture.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

void Put(const std::string& path, int flags, int descriptor) {
    if (dup2(open(path.c_str(), flags), descriptor) < 0) {
        throw std::runtime_error(path + " cannot be opened");
    }
}

// A database with a loaded packet, and links to both.
class Outputs : public ProcessFixture {
  protected:
    Outputs() {
        m_sources = {Configuration("configuration.xml", "record", "user", "login"),
                     Records("users.xml", {{{"login", "ann"}}})};
        Load(m_sources);
        fs::create_directory(m_folder.File("folder"));
        fs::copy_file(m_sources[1], m_folder.File("folder/more.xml"));
        fs::create_symlink("tracker.db", m_folder.File("link"));
        fs::create_hard_link(m_sources[1], m_folder.File("hard"));
        fs::create_symlink("tracker.db-wal", m_folder.File("log"));
    }

    std::vector<std::string> Command(const std::string& command) const {
        return {command, m_database, m_sources[0], m_sources[1], m_folder.File("folder")};
    }

    Answer RunWith(const std::string& command, const std::string& option,
                   const std::string& output) const {
        auto arguments = Command(command);
        arguments.insert(arguments.end(), {option, output});
        return Run(arguments);
    }

    std::string Content(const std::string& name) const {
        std::ifstream file(m_folder.File(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Every file that is there, with its content.
    std::map<std::string, std::string> Everything() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(m_folder.Path())) {
            const std::string name = fs::relative(entry.path(), m_folder.Path()).string();
            const auto type = std::to_string(static_cast<int>(entry.symlink_status().type()));
            files[name] = type + (entry.is_regular_file() ? Content(name) : "");
        }
        return files;
    }

    std::vector<std::string> m_sources;
};

struct Hit {
    const char* command;
    const char* option;
    const char* output;
    const char* what;  // that must not be overwritten
};

class OutputsThatAreInputs : public Outputs, public testing::WithParamInterface<Hit> {};

TEST_P(OutputsThatAreInputs, AreRefusedAndNothingIsTouched) {
    const auto before = Everything();
    const Answer answer =
        RunWith(GetParam().command, GetParam().option, m_folder.File(GetParam().output));
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text,
                AllOf(StartsWith(fmt::format("ztimport: {} {} would be written over ",
                                             GetParam().option, m_folder.File(GetParam().output))),
                      HasSubstr(GetParam().what), HasSubstr("name another file")));
    EXPECT_EQ(Everything(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OutputsThatAreInputs,
    testing::Values(Hit{"load", "--report", "tracker.db", "the database"},
                    Hit{"load", "--html", "tracker.db", "the database"},
                    Hit{"load", "--trace", "tracker.db", "the database"},
                    Hit{"load", "--trace", "link", "the database"},
                    Hit{"load", "--report", "tracker.db-wal", "a part of the database"},
                    Hit{"load", "--trace", "tracker.db-shm", "a part of the database"},
                    Hit{"load", "--trace", "tracker.db-journal", "a part of the database"},
                    Hit{"load", "--trace", "log", "a part of the database"},
                    Hit{"load", "--html", "users.xml", "the packet file"},
                    Hit{"load", "--trace", "configuration.xml", "the packet file"},
                    Hit{"load", "--report", "folder/more.xml", "the packet file"},
                    Hit{"load", "--trace", "folder/../users.xml", "the packet file"},
                    Hit{"load", "--trace", "hard", "the packet file"},
                    Hit{"check", "--report", "tracker.db", "the database"},
                    Hit{"check", "--trace", "users.xml", "the packet file"},
                    Hit{"verify", "--report", "tracker.db", "the database"},
                    Hit{"verify", "--html", "users.xml", "the packet file"}),
    [](const auto& test) {
        return fmt::format("{}_{}", test.index, std::string(test.param.option).substr(2));
    });

TEST_F(Outputs, DoNotReplaceEachOther) {
    for (const auto& [one, other] : {std::pair{"--report", "--html"}, {"--trace", "--report"}}) {
        auto arguments = Command("load");
        arguments.insert(arguments.end(), {one, m_folder.File("new"), other, m_folder.File("new")});
        const Answer answer = Run(arguments);
        EXPECT_EQ(answer.code, 2);
        EXPECT_THAT(answer.text, HasSubstr("would be written over --"));
    }
    EXPECT_FALSE(fs::exists(m_folder.File("new")));
}

TEST_F(Outputs, DoNotReplaceThePacketOnStandardInput) {
    const std::string before = Content("users.xml");
    const Answer answer = Run({"load", m_database, m_sources[0], "-", "--trace", m_sources[1]},
                              [this] { Put(m_sources[1], O_RDONLY, STDIN_FILENO); });
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("would be written over the source -"));
    EXPECT_EQ(Content("users.xml"), before);
}

TEST_F(Outputs, OnStandardOutputDoNotGoIntoTheDatabase) {
    const std::string before = Content("tracker.db");
    const Answer answer =
        Run(Command("load"), [this] { Put(m_database, O_WRONLY | O_APPEND, STDOUT_FILENO); });
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("standard output would be written over the database"));
    EXPECT_EQ(Content("tracker.db"), before);
}

TEST_F(Outputs, DoNotReplaceWhatStandardOutputGoesTo) {
    const std::string said = m_folder.Write("said.txt", "");
    auto arguments = Command("load");
    arguments.insert(arguments.end(), {"--report", said});
    const Answer answer = Run(arguments, [&] { Put(said, O_WRONLY | O_APPEND, STDOUT_FILENO); });
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("would be written over what goes to standard output"));
}

TEST_F(Outputs, DoNotReplaceAnAttachment) {
    fs::create_directory(m_folder.File("files"));
    m_folder.Write("files/page.html", "<!DOCTYPE html>\n<html>an attachment</html>");
    auto arguments = Command("load");
    arguments.insert(arguments.end(), {"--attachments", m_folder.File("files"), "--html",
                                       m_folder.File("files/page.html")});
    const Answer answer = Run(arguments);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("would be written over a file in the attachments folder"));
    EXPECT_THAT(Content("files/page.html"), HasSubstr("an attachment"));
}

TEST_F(Outputs, InTheAttachmentsFolderReplaceEarlierOnes) {
    for (int run = 0; run < 2; ++run) {
        auto arguments = Command("load");
        arguments.insert(arguments.end(),
                         {"--attachments", m_folder.Path().string(), "--fresh", "--report",
                          m_folder.File("r.json"), "--html", m_folder.File("p.html"), "--trace",
                          m_folder.File("t.txt")});
        const Answer answer = Run(arguments);
        EXPECT_EQ(answer.code, 1) << answer.text;  // the users are there already
    }
}

TEST_F(Outputs, DoNotReplaceRejectedRecords) {
    fs::create_directory(m_folder.File("rejects"));
    const std::string rejects = m_folder.Write("rejects/0001-records.xml", "<records></records>");
    auto arguments = Command("load");
    arguments.insert(arguments.end(), {"--rejects", m_folder.File("rejects"), "--report", rejects});
    const Answer answer = Run(arguments);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("would be written over rejected records"));
    EXPECT_EQ(Content("rejects/0001-records.xml"), "<records></records>");
}

TEST_F(Outputs, DoNotTakeTheNameOfTheFolderOfRejectedRecords) {
    auto arguments = Command("load");
    arguments.insert(arguments.end(),
                     {"--rejects", m_folder.File("new/"), "--report", m_folder.File("new")});
    const Answer answer = Run(arguments);
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("would be written over the folder of rejected records"));
}

TEST_F(Outputs, OfAnInitDoNotGoBesideAFileThatTheEngineWouldTake) {
    const std::string schema = m_folder.Write(
        "new.db-wal", "record_types:\n  a:\n    key: [b]\n    fields:\n      b: {type: text}\n");
    const std::string before = Content("new.db-wal");
    const Answer answer = Run({"init", m_folder.File("new.db"), schema});
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, HasSubstr("new.db-wal: this file is in the way"));
    EXPECT_EQ(Content("new.db-wal"), before);
    EXPECT_FALSE(fs::exists(m_folder.File("new.db")));
}

TEST_F(Outputs, AreNeverAMapOrAFileThatItReads) {
    const std::string map = m_folder.Write("map.yaml",
                                           "map: 1\nsources: {users: {files: users.csv}}\nsteps:\n"
                                           "- {records: user, source: users, key: login, fields: "
                                           "{login: login}}\n");
    const std::string rows = m_folder.Write("users.csv", "login\nbob\n");
    fs::create_symlink("users.csv", m_folder.File("rows"));
    for (const std::string command : {"load", "check", "verify"}) {
        const auto answer = [&](const std::string& output) {
            return Run({command, m_database, "--map", map, "--report", output, rows});
        };
        EXPECT_THAT(answer(map).text,
                    HasSubstr("--report " + map + " would be written over the map " + map));
        EXPECT_THAT(answer(m_folder.File("rows")).text,
                    HasSubstr("/rows would be written over the source " + rows));
        EXPECT_EQ(answer(rows).code, 2);
    }
    EXPECT_EQ(Content("users.csv"), "login\nbob\n");
}

class OutputKinds : public Outputs, public testing::WithParamInterface<const char*> {
  protected:
    Answer WriteTo(const std::string& path) const { return RunWith("load", GetParam(), path); }
};

TEST_P(OutputKinds, ThatAreLinksReplaceTheFileBehindTheLink) {
    m_folder.Write("folder/target", "earlier");
    fs::create_symlink("folder/target", m_folder.File("output"));
    EXPECT_EQ(WriteTo(m_folder.File("output")).code, 0);
    EXPECT_EQ(fs::read_symlink(m_folder.File("output")), "folder/target");
    EXPECT_THAT(Content("folder/target"), AllOf(testing::Ne(""), testing::Ne("earlier")));
}

TEST_P(OutputKinds, ThatAreLinksToNothingMakeTheFile) {
    fs::create_symlink("folder/target", m_folder.File("output"));
    EXPECT_EQ(WriteTo(m_folder.File("output")).code, 0);
    EXPECT_TRUE(fs::is_symlink(m_folder.File("output")));
    EXPECT_NE(Content("folder/target"), "");
}

TEST_P(OutputKinds, ThatAreFilesLeaveWhatOtherNamesOfThemHold) {
    m_folder.Write("output", "earlier");
    fs::create_hard_link(m_folder.File("output"), m_folder.File("copy"));
    EXPECT_EQ(WriteTo(m_folder.File("output")).code, 0);
    EXPECT_EQ(Content("copy"), "earlier");
    EXPECT_THAT(Content("output"), AllOf(testing::Ne(""), testing::Ne("earlier")));
}

TEST_P(OutputKinds, ThatAreFilesKeepTheirPermissions) {
    m_folder.Write("output", "earlier");
    fs::permissions(m_folder.File("output"), fs::perms{0620});
    EXPECT_EQ(WriteTo(m_folder.File("output")).code, 0);
    EXPECT_EQ(fs::status(m_folder.File("output")).permissions(), fs::perms{0620});
}

TEST_P(OutputKinds, ThatArePipesAreWrittenToAsTheyAre) {
    const std::string pipe = m_folder.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    // Nothing is waited for then.
    const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(fcntl(reader, F_SETPIPE_SZ, 1 << 20), 1 << 20);
    EXPECT_EQ(WriteTo(pipe).code, 0);
    EXPECT_TRUE(fs::is_fifo(pipe));
    std::string got(16, ' ');
    EXPECT_EQ(read(reader, got.data(), got.size()), static_cast<ssize_t>(got.size()));
    close(reader);
}

TEST_P(OutputKinds, ThatAreFoldersAreRefused) {
    fs::create_directory(m_folder.File("other"));
    const Answer answer = WriteTo(m_folder.File("other"));
    EXPECT_EQ(answer.code, 2);
    EXPECT_THAT(answer.text, AllOf(HasSubstr("cannot be written"), HasSubstr("Is a directory")));
}

TEST_P(OutputKinds, LeaveNothingBesideThem) {
    const std::size_t before = m_folder.FileCount();
    EXPECT_EQ(WriteTo(m_folder.File("output")).code, 0);
    EXPECT_EQ(m_folder.FileCount(), before + 1);
}

INSTANTIATE_TEST_SUITE_P(Options, OutputKinds, testing::Values("--report", "--html", "--trace"),
                         [](const auto& test) { return std::string(test.param).substr(2); });

}  // namespace
}  // namespace tool
