#include "platform/messages/addiagnostic.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Takes the traces of one flag and counts how often it was asked whether it wants some.
class RecordingSink : public AdDiagnosticSink {
  public:
    bool Wants(int flag) override {
        ++m_questions;
        return flag == AdDiagnostic::kImportFlag;
    }
    void Write(const Obx_String& tag, const Obx_String& text) override {
        m_traces.push_back((tag + u": " + text).ToUtf8());
    }

    int Questions() const { return m_questions; }
    const std::vector<std::string>& Traces() const { return m_traces; }

  private:
    int m_questions = 0;
    std::vector<std::string> m_traces;
};

class AdDiagnosticTest : public testing::Test {
  protected:
    void SetUp() override { AdDiagnostic::SetSink(&m_sink); }
    void TearDown() override {
        AdDiagnostic::SetSink(nullptr);
        for (int flag = 0; flag < 64; ++flag) {
            AdDiagnostic::SetFlag(flag, false);
        }
    }

    RecordingSink m_sink;
};

TEST_F(AdDiagnosticTest, AllFlagsAreOffAtFirst) {
    for (int flag = 0; flag < 64; ++flag) {
        EXPECT_FALSE(AdDiagnostic::FlagSet(flag)) << flag;
        EXPECT_FALSE(AdDiagnostic::IsEnabled(flag)) << flag;
    }
}

TEST_F(AdDiagnosticTest, AFlagIsSwitchedByItself) {
    for (const int flag : {0, 31, 32, AdDiagnostic::kImportFlag, 63}) {
        AdDiagnostic::SetFlag(flag, true);
        for (int other = 0; other < 64; ++other) {
            EXPECT_EQ(AdDiagnostic::FlagSet(other), other == flag) << flag << " " << other;
        }
        AdDiagnostic::SetFlag(flag, false);
        EXPECT_FALSE(AdDiagnostic::FlagSet(flag)) << flag;
    }
}

TEST_F(AdDiagnosticTest, AFlagThatDoesNotExistIsNeverSet) {
    for (const int flag : {-1, -6, 64, 64 + AdDiagnostic::kImportFlag}) {
        AdDiagnostic::SetFlag(flag, true);
        EXPECT_FALSE(AdDiagnostic::FlagSet(flag)) << flag;
    }
    EXPECT_FALSE(AdDiagnostic::FlagSet(AdDiagnostic::kImportFlag));
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    EXPECT_FALSE(AdDiagnostic::FlagSet(64 + AdDiagnostic::kImportFlag));
}

TEST_F(AdDiagnosticTest, AFlagIsEnabledWhenTheSinkWantsIt) {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    AdDiagnostic::SetFlag(1, true);
    EXPECT_TRUE(AdDiagnostic::IsEnabled(AdDiagnostic::kImportFlag));
    EXPECT_FALSE(AdDiagnostic::IsEnabled(1));
}

TEST_F(AdDiagnosticTest, TheSinkIsNotAskedAboutAFlagThatIsOff) {
    EXPECT_FALSE(AdDiagnostic::IsEnabled(AdDiagnostic::kImportFlag));
    EXPECT_EQ(m_sink.Questions(), 0);
}

TEST_F(AdDiagnosticTest, NothingIsEnabledWithoutASink) {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    AdDiagnostic::SetSink(nullptr);
    EXPECT_FALSE(AdDiagnostic::IsEnabled(AdDiagnostic::kImportFlag));
}

TEST_F(AdDiagnosticTest, ReportsGoToTheSink) {
    AdDiagnostic::Report(u"AdImporter", u"SetSession");
    EXPECT_THAT(m_sink.Traces(), ElementsAre("AdImporter: SetSession"));
}

TEST_F(AdDiagnosticTest, ReportsWithoutASinkAreDropped) {
    AdDiagnostic::SetSink(nullptr);
    AdDiagnostic::Report(u"AdImporter", u"SetSession");
    EXPECT_THAT(m_sink.Traces(), IsEmpty());
}

TEST_F(AdDiagnosticTest, InstallingASinkGivesTheFormerOne) {
    RecordingSink other;
    EXPECT_EQ(AdDiagnostic::SetSink(&other), &m_sink);
    EXPECT_EQ(AdDiagnostic::SetSink(&m_sink), &other);
}

}  // namespace
