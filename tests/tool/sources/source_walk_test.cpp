#include "tool/sources/source_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool/io/source_error.h"
#include "tool/process/interrupt.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using tool::SourceList;
using tool::SourceWalk;
using tool::WalkStep;

std::string ConfigurationOf(const std::string& type, const std::string& data = "record") {
    return "<configuration><import_data name=\"" + data + "\"/><record_type name=\"" + type +
           "\"/><original_id name=\"id\"/></configuration>";
}

class SourceWalkTest : public testing::Test {
  protected:
    ~SourceWalkTest() override {
        // Forgets an interruption.
        tool::WatchInterrupts();
    }

    SourceList Write(const std::vector<std::string>& texts) const {
        std::vector<std::string> paths;
        for (const std::string& text : texts) {
            paths.push_back(m_folder.Write(std::to_string(paths.size()) + ".xml", text));
        }
        return SourceList(paths);
    }

    tool::WalkOptions Options() {
        tool::WalkOptions options;
        options.unseen = [this](const tool::UnseenRecord& unseen, const std::string& source) {
            m_told.push_back(Short(source) + ": " + unseen.text);
        };
        options.frame = [this](const tool::FrameDefect& defect, const std::string& source) {
            m_told.push_back(Short(source) + ": " + defect.text);
        };
        return options;
    }

    static std::string Short(const std::string& source) {
        return std::filesystem::path(source).filename().string();
    }

    // A step in a few words.
    static std::string Describe(WalkStep step, const SourceWalk& walk) {
        switch (step) {
            case WalkStep::Configuration:
                return "configuration " + walk.Configuration().RecordType();
            case WalkStep::Data:
                return "data of " + walk.Configuration().RecordType();
            case WalkStep::Record:
                return std::string(walk.Record().raw);
            case WalkStep::DataEnd:
                return "data end";
            case WalkStep::End:
                return "end";
            default:
                return "stopped";
        }
    }

    // All steps from here to the end.
    static std::vector<std::string> StepsOf(SourceWalk& walk) {
        std::vector<std::string> steps;
        WalkStep step = WalkStep::Data;
        while (step != WalkStep::End && step != WalkStep::Stopped) {
            step = walk.Next();
            steps.push_back(Describe(step, walk));
        }
        return steps;
    }

    // What a source is refused with.
    template <typename Work>
    static std::string Refusal(Work work) {
        try {
            work();
        } catch (const tool::SourceError& error) {
            return error.what();
        }
        return "nothing was refused";
    }

    const TemporaryFolder m_folder;
    std::vector<std::string> m_told;
};

TEST_F(SourceWalkTest, ComesToEverySourceAndRecordInOrder) {
    const SourceList list =
        Write({ConfigurationOf("user"), "<r><record>1</record></r>", ConfigurationOf("bug"),
               "<r></r>", "<r><record>2</record><record>3</record></r>"});
    SourceWalk walk(list, Options());
    EXPECT_THAT(StepsOf(walk),
                ElementsAre("configuration user", "data of user", "<record>1</record>", "data end",
                            "configuration bug", "data of bug", "data end", "data of bug",
                            "<record>2</record>", "<record>3</record>", "data end", "end"));
}

TEST_F(SourceWalkTest, KnowsWhereARecordStands) {
    const SourceList list = Write({"<r>\n<record>1</record>\n<record>2</record></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    walk.Next();
    EXPECT_EQ(walk.Record().source, walk.SourceName());
    EXPECT_EQ(walk.Record().ordinal, 1U);
    EXPECT_EQ(walk.Record().line, 3U);
}

TEST_F(SourceWalkTest, KnowsTheOriginalIdOfARecord) {
    const SourceList list = Write({ConfigurationOf("bug"), "<r></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    EXPECT_EQ(walk.IdIn("<record><field name=\"ID\">b-1</field></record>"), "b-1");
    EXPECT_EQ(walk.IdIn("<record><field name=\"title\">x</field></record>"), "");
}

TEST_F(SourceWalkTest, LeavesTheRestOfASource) {
    const SourceList list =
        Write({"<r><record>1</record><record>2</record></r>", "<r><record>3</record></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    walk.LeaveSource();
    EXPECT_EQ(walk.BytesRead(), list.Sources().front().size);
    EXPECT_THAT(StepsOf(walk), ElementsAre("data of ", "<record>3</record>", "data end", "end"));
}

TEST_F(SourceWalkTest, HasReadEveryByteInTheEnd) {
    const SourceList list =
        Write({ConfigurationOf("bug"), "<r><record>1</record></r>", ConfigurationOf("user")});
    SourceWalk walk(list, Options());
    StepsOf(walk);
    EXPECT_EQ(walk.BytesRead(), list.TotalSize());
}

TEST_F(SourceWalkTest, TellsWhatIsNotReadWithItsSource) {
    const SourceList list = Write({"<r></r>", "<r><record id='1'></record></r>junk"});
    SourceWalk walk(list, Options());
    StepsOf(walk);
    EXPECT_THAT(m_told, ElementsAre(testing::StartsWith("1.xml: <record id='1'>"),
                                    testing::StartsWith("1.xml: ")));
}

TEST_F(SourceWalkTest, ReadsASourceWholeWithoutLosingItsPlace) {
    const SourceList list = Write({"<r><record>1</record><record>2</record></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    EXPECT_EQ(walk.ReadWhole().Raw(), "<r><record>1</record><record>2</record></r>");
    EXPECT_THAT(StepsOf(walk), ElementsAre("<record>2</record>", "data end", "end"));
}

TEST_F(SourceWalkTest, RefusesWhatIsNoSource) {
    const SourceList list = Write({"a text"});
    SourceWalk walk(list, Options());
    EXPECT_THAT(Refusal([&] { walk.Next(); }), HasSubstr("0.xml: this is no packet"));
}

TEST_F(SourceWalkTest, RefusesDataWithoutAConfiguration) {
    const SourceList list = Write({"<r></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    EXPECT_THAT(Refusal([&] { walk.RequireUsableData(); }),
                HasSubstr("no configuration packet comes before these records"));
}

TEST_F(SourceWalkTest, RefusesAttachmentsWithoutTheirFolder) {
    const SourceList list = Write({ConfigurationOf("bug", "attachments"), "<r></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    EXPECT_THAT(Refusal([&] { walk.RequireUsableData(); }), HasSubstr("--attachments"));
}

TEST_F(SourceWalkTest, StopsBeforeTheNextRecordWhenItIsInterrupted) {
    const SourceList list = Write({"<r><record>1</record><record>2</record></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    walk.Next();
    tool::WatchInterrupts();
    std::raise(SIGTERM);
    EXPECT_THAT(StepsOf(walk), ElementsAre("stopped"));
}

TEST_F(SourceWalkTest, StopsBeforeTheNextSourceWhenItIsInterrupted) {
    const SourceList list = Write({ConfigurationOf("bug"), "<r><record>1</record></r>"});
    SourceWalk walk(list, Options());
    walk.Next();
    tool::WatchInterrupts();
    std::raise(SIGTERM);
    EXPECT_THAT(StepsOf(walk), ElementsAre("stopped"));
}

}  // namespace
