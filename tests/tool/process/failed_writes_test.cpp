#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "engine_cases.h"
#include "process_fixture.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kNoSpace = "cannot be written: No space left on device";

// Commands whose output cannot be written.
class FailedWrites : public ProcessFixture {
  protected:
    explicit FailedWrites(Engine engine) : ProcessFixture(engine) {
        m_sources = {Configuration("configuration.xml", "record", "user", "login"),
                     Records("users.xml", {{{"login", "ann"}}})};
    }

    std::vector<std::string> Arguments(const std::string& command) const {
        if (command.starts_with("--")) {
            return {command};
        }
        if (command == "init") {
            return {
                "init", m_folder.File("new.db"),
                m_folder.Write("schema.yaml",
                               "record_types:\n  a:\n    key: [b]\n    fields:\n      b: {type: "
                               "text}\n")};
        }
        if (command == "show") {
            return {"show", m_database};
        }
        return {command, m_database, m_sources[0], m_sources[1]};
    }

    // A device that is always full: one of the test's own where it may make it.
    std::string FullDevice() const {
        constexpr unsigned kMemoryDevices = 1;
        constexpr unsigned kFull = 7;
        const std::string device = m_folder.File("full");
        if (mknod(device.c_str(), S_IFCHR | 0666, makedev(kMemoryDevices, kFull)) == 0) {
            const int descriptor = open(device.c_str(), O_WRONLY);
            if (descriptor >= 0) {
                close(descriptor);
                return device;
            }
        }
        return "/dev/full";
    }

    std::vector<std::string> m_sources;
};

void FillStandardOutput() {
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
}

class FailedWritesTest : public OnEachEngine<FailedWrites> {};

ON_EACH_ENGINE(FailedWritesTest);

using FailedStandardOutput = CasesOnEachEngine<FailedWrites, const char*>;

TEST_P(FailedStandardOutput, IsAnError) {
    const Answer answer = Run(Arguments(TheCase()), FillStandardOutput);
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, HasSubstr(std::string("ztimport: standard output: ") + kNoSpace));
}

TEST_P(FailedStandardOutput, IsAnErrorWhenItIsClosed) {
    const Answer answer = Run(Arguments(TheCase()), [] { close(STDOUT_FILENO); });
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text,
                HasSubstr("ztimport: standard output: cannot be written: Bad file descriptor"));
    if (IsFile()) {
        EXPECT_EQ(Query("PRAGMA integrity_check"), "ok");
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, FailedStandardOutput,
                         OnEachEngineOf(testing::Values("--help", "--version", "init", "load",
                                                        "check", "verify", "show")),
                         NamedWithEngine([](const std::string& name) {
                             return name.substr(name.find_first_not_of('-'));
                         }));

TEST_P(FailedWritesTest, OfStandardOutputDoNotHideWhatEndedTheCommand) {
    const Answer answer = Run({"show", m_folder.File("nowhere.db")}, FillStandardOutput);
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, HasSubstr("nowhere.db: there is no such file"));
}

TEST_P(FailedWritesTest, OfStandardErrorDoNotEndALoad) {
    const Answer answer = Run(Arguments("load"), [] { close(STDERR_FILENO); });
    EXPECT_EQ(answer.code, 0) << answer.text;
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
}

class FailedOutput : public CasesOnEachEngine<FailedWrites, const char*> {
  protected:
    std::vector<std::string> WithFullOutput(const std::string& command) const {
        auto arguments = Arguments(command);
        arguments.insert(arguments.end(), {TheCase(), FullDevice()});
        return arguments;
    }
};

TEST_P(FailedOutput, IsAnErrorWhenTheLoadIsDone) {
    const Answer answer = Run(WithFullOutput("load"));
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text,
                AllOf(HasSubstr("1 record read: 1 created"), HasSubstr("ztimport: "),
                      HasSubstr(std::string("full: ") + kNoSpace), HasSubstr("make room")));
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
}

TEST_P(FailedOutput, DoesNotHideTheErrorOfTheDatabase) {
    Execute("ALTER TABLE zt_journal DROP COLUMN skipped");
    const Answer answer = Run(WithFullOutput("load"));
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.text, HasSubstr(IsFile() ? "no such column: skipped"
                                                : "column \"skipped\" does not exist"));
}

INSTANTIATE_TEST_SUITE_P(Options, FailedOutput,
                         OnEachEngineOf(testing::Values("--report", "--html", "--trace")),
                         NamedWithEngine([](const std::string& name) { return name.substr(2); }));

TEST_P(FailedWritesTest, OfOneReportLeaveTheOther) {
    for (const std::string command : {"check", "load", "verify"}) {
        const std::string page = m_folder.File(command + ".html");
        auto arguments = Arguments(command);
        arguments.insert(arguments.end(), {"--report", FullDevice(), "--html", page});
        EXPECT_EQ(Run(arguments).code, 3);
        EXPECT_TRUE(std::filesystem::exists(page));
    }
}

TEST_P(FailedWritesTest, OfAReportAreErrorsOfVerifyAndCheck) {
    for (const char* const command : {"check", "verify"}) {
        auto arguments = Arguments(command);
        arguments.insert(arguments.end(), {"--report", FullDevice()});
        const Answer answer = Run(arguments);
        EXPECT_EQ(answer.code, 3);
        EXPECT_THAT(answer.text, AllOf(HasSubstr("1 record read"), HasSubstr(kNoSpace)));
    }
}

}  // namespace
}  // namespace tool
