#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "acting_sink.h"
#include "load_fixture.h"
#include "tool/commands/check_command.h"
#include "tool/commands/verify_command.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::HasSubstr;

// Calls `action` at the first text that is written.
class ActingBuffer : public std::stringbuf {
  public:
    explicit ActingBuffer(std::function<void()> action) : m_action(std::move(action)) {}

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        if (const auto action = std::exchange(m_action, {})) {
            action();
        }
        return std::stringbuf::xsputn(text, size);
    }

  private:
    std::function<void()> m_action;
};

// A packet of 250 bugs that something else writes to while it is read. A load makes each hundred of
// them permanent.
class ChangingSourceTest : public OnEachEngine<LoadFixture> {
  protected:
    ChangingSourceTest() {
        std::vector<Fields> records;
        for (int i = 0; i < 250; ++i) {
            records.push_back({{"title", fmt::format("T{}", i)}});
        }
        m_bugs = Records("bugs.xml", records);
        m_sources = {Configuration("configuration.xml", "record", "bug", "source_id"), m_bugs};
    }

    void Append() const {
        std::ofstream(m_bugs, std::ios::app) << RecordXml({{"title", "one more"}});
    }

    // Loads the packet and does `action` when 150 records are imported; returns what it is refused
    // with.
    std::string LoadAndMeanwhile(const std::function<void()>& action) {
        const ActingSink sink(150, action);
        return Refusal([this] { Load(m_sources); });
    }

    template <typename Work>
    static std::string Refusal(Work work) {
        try {
            work();
        } catch (const SourceChanged& error) {
            return error.what();
        }
        ADD_FAILURE() << "the source was taken as it stands";
        return {};
    }

    std::string Bugs() { return Query("SELECT count(*) FROM bug"); }

    std::string m_bugs;
    std::vector<std::string> m_sources;
};

TEST_P(ChangingSourceTest, APacketThatGrowsIsNotKnownAsLoaded) {
    const std::string refusal = LoadAndMeanwhile([this] { Append(); });
    EXPECT_THAT(refusal, HasSubstr("bugs.xml: the file was written to while it was read"));
    EXPECT_THAT(refusal, HasSubstr("100 records of it were imported before it changed"));
    EXPECT_EQ(Query("SELECT complete FROM zt_journal"), "0");
    EXPECT_EQ(Bugs(), "100");
}

TEST_P(ChangingSourceTest, TheFinishedPacketDoesNotComeASecondTime) {
    LoadAndMeanwhile([this] { Append(); });
    EXPECT_THAT(Refusal([this] { Load(m_sources); }),
                HasSubstr("bugs.xml: the file has changed since an earlier load stopped in it. 100 "
                          "records of it were imported"));
    EXPECT_EQ(Bugs(), "100");
}

TEST_P(ChangingSourceTest, ThePacketAsItWasGoesOn) {
    const std::string before = m_folder.File("before.xml");
    std::filesystem::copy_file(m_bugs, before);
    LoadAndMeanwhile([this] { Append(); });
    std::filesystem::rename(before, m_bugs);
    EXPECT_EQ(Load(m_sources), 0);
    EXPECT_EQ(Query("SELECT count(DISTINCT title) FROM bug"), "250");
    EXPECT_EQ(Bugs(), "250");
}

TEST_P(ChangingSourceTest, FreshTakesTheChangedPacketAndForgetsTheFormerOne) {
    LoadAndMeanwhile([this] { Append(); });
    m_options.fresh = true;
    EXPECT_EQ(Load(m_sources), 0);
    EXPECT_EQ(Bugs(), "351");
    m_options.fresh = false;
    Append();
    EXPECT_EQ(Load(m_sources), 0);
    EXPECT_EQ(Bugs(), "603");
}

TEST_P(ChangingSourceTest, ANewPacketOfTheSameNameIsTakenAfterACompleteLoad) {
    EXPECT_EQ(Load(m_sources), 0);
    Append();
    EXPECT_EQ(Load(m_sources), 0);
    EXPECT_EQ(Bugs(), "501");
}

TEST_P(ChangingSourceTest, AnOverwrittenPacketIsNotKnownAsLoaded) {
    LoadAndMeanwhile([this] {
        std::fstream(m_bugs, std::ios::in | std::ios::out).seekp(10'000) << "<!-- nothing -->";
    });
    EXPECT_EQ(Query("SELECT complete FROM zt_journal"), "0");
}

TEST_P(ChangingSourceTest, AReplacedPacketEndsTheLoad) {
    const std::string other = m_folder.File("other.xml");
    std::filesystem::copy_file(m_bugs, other);
    EXPECT_THAT(LoadAndMeanwhile([&] { std::filesystem::rename(other, m_bugs); }),
                HasSubstr("another file took its name"));
    EXPECT_EQ(Query("SELECT complete FROM zt_journal"), "0");
}

TEST_P(ChangingSourceTest, NothingOfAWholePacketIsKept) {
    m_options.wholePackets = true;
    LoadAndMeanwhile([this] { Append(); });
    EXPECT_EQ(Bugs(), "0");
    EXPECT_EQ(Query("SELECT count(*) FROM zt_journal"), "0");
}

TEST_P(ChangingSourceTest, ARehearsalEnds) {
    const ActingSink sink(150, [this] { Append(); });
    m_options.database = m_database;
    m_options.sources = m_sources;
    std::ostringstream out;
    EXPECT_THAT(Refusal([&] { RunCheck(m_options, out, out); }), HasSubstr("was written to"));
}

TEST_P(ChangingSourceTest, AComparisonEnds) {
    ActingBuffer buffer([this] { Append(); });
    std::ostream err(&buffer);
    std::ostringstream out;
    VerifyOptions options;
    options.database = m_database;
    options.sources = m_sources;
    EXPECT_THAT(Refusal([&] { RunVerify(options, out, err); }), HasSubstr("was written to"));
}

ON_EACH_ENGINE(ChangingSourceTest);

}  // namespace
}  // namespace tool
