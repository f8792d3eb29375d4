#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <stdexcept>

#include "child_process.h"
#include "faulty_tool.h"
#include "load_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

// The tool as people have it: the address sanitizer reserves more memory than any limit allows, and
// brings an allocator of its own. Null where only a sanitized one is there.
const char* PlainTool() {
    return kSanitized ? std::getenv("ZT_PLAIN_TOOL") : ZTIMPORT;
}

// A load of a long record between two short ones, in a process that has little memory.
class LittleMemory : public LoadFixture {
  protected:
    LittleMemory() {
        m_sources = {
            Configuration("configuration.xml", "record", "bug", "source_id"),
            Records("bugs.xml", {{{"source_id", "a"}, {"title", "A"}},
                                 {{"source_id", "b"}, {"title", std::string(15'000'000, 'b')}},
                                 {{"source_id", "c"}, {"title", "C"}}})};
    }

    void SetUp() override {
        if (PlainTool() == nullptr) {
            GTEST_SKIP() << "ZT_PLAIN_TOOL names no tool without sanitizers";
        }
    }

    int Run(const std::string& command, const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {PlainTool(), command, m_database, m_sources[0],
                                          m_sources[1]};
        words.insert(words.end(), more.begin(), more.end());
        ChildProcess child(words, [] {
            const rlimit limit{160'000'000, 160'000'000};
            if (::setrlimit(RLIMIT_AS, &limit) != 0) {
                throw std::runtime_error("the memory cannot be limited");
            }
        });
        const int code = child.Wait();
        m_said = child.Output();
        return code;
    }

    std::vector<std::string> m_sources;
    std::string m_said;
};

TEST_F(LittleMemory, EndsALoadWithAMessage) {
    EXPECT_EQ(Run("load"), 3) << m_said;
    EXPECT_THAT(m_said, HasSubstr("bugs.xml: there is not enough memory for record 2; make some "
                                  "free, or reject such records with a --max-record-size lower "
                                  "than 16777216"));
    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok");
}

TEST_F(LittleMemory, EndsARehearsalAndAComparisonWithAMessage) {
    for (const char* const command : {"check", "verify"}) {
        EXPECT_EQ(Run(command), 3) << command << ": " << m_said;
        EXPECT_THAT(m_said, HasSubstr("not enough memory"));
    }
}

TEST_F(LittleMemory, IsEnoughForTheOthersWhenLongRecordsAreRejected) {
    Run("load");
    EXPECT_EQ(Run("load", {"--max-record-size", "1MB"}), 1) << m_said;
    EXPECT_THAT(m_said, HasSubstr("bugs.xml, record 2, line 4: the record is not shorter than 1 "
                                  "MiB, which --max-record-size sets"));
    EXPECT_EQ(Query("SELECT source_id FROM bug ORDER BY dbid"), "a\nc");
}

// Global objects ask for memory before the tool itself begins.
TEST_F(LoadFixture, MemoryThatIsMissingAtTheStartEndsTheToolWithAMessage) {
    FaultyTool show({"show", m_database}, "allocation:1:ENOMEM");
    EXPECT_EQ(show.Wait(), 3);
    EXPECT_THAT(show.Output(), HasSubstr("ztimport: there is not enough memory"));
}

}  // namespace
}  // namespace tool
