#include <gtest/gtest.h>

#include "tests/ztimporter/importer_fixture.h"

// The importer with its traces switched off: it traces nothing and does the same.

namespace {

// Counts what it is asked.
class CountingSink : public AdDiagnosticSink {
  public:
    explicit CountingSink(bool wants) : m_wants(wants) {}

    bool Wants(int) override {
        ++m_asked;
        return m_wants;
    }
    void Write(const Obx_String&, const Obx_String&) override { ++m_written; }

    int Asked() const { return m_asked; }
    int Written() const { return m_written; }

  private:
    bool m_wants;
    int m_asked = 0;
    int m_written = 0;
};

class TracingTest : public ImporterTest {
  protected:
    // Runs every operation once so that it succeeds and once so that it fails; returns every error
    // text.
    Lines RunEverything() {
        Lines errors;
        const auto import = [&](const Configuration& configuration, const Pairs& record) {
            for (const std::string& packet : {configuration.Packet(), Packet({Record(record)})}) {
                Import(packet);
                errors.push_back(m_error.ToUtf8());
            }
        };
        const Pairs found = {{"source_id", "core-1"},
                             {"duplicate_of", "core-9"},
                             {"owner", "a@b"},
                             {"history", ManyHistoryLines(2)},
                             {"files", AttachmentLines("7", "a.txt", "about")}};
        const Pairs unknown = {{"source_id", "core-2"}, {"owner", "x@y"}, {"log", "7\tnever"}};
        for (const Pairs& record : {found, unknown}) {
            for (const char* importData : {"record", "history", "attachments"}) {
                for (const bool update : {false, true}) {
                    import({.importData = importData,
                            .duplicateId = "duplicate_of",
                            .updateRecord = update,
                            .mapping =
                            { { "owner",
                                "mail" } }},
                           record);
                }
            }
        }
        return errors;
    }

    void SetUp() override {
        m_bug.Field(u"history", ad_field_type::kHistory);
        GivenRecords(u"core-1", {u"33"});
        GivenRecords(u"core-9", {u"39"});
        m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann"};
    }
};

TEST_F(TracingTest, OffWritesNothingAndDoesNotEvenAskTheSink) {
    m_traces.reset();
    CountingSink sink(true);
    AdDiagnosticSink* former = AdDiagnostic::SetSink(&sink);
    RunEverything();
    AdDiagnostic::SetSink(former);
    EXPECT_EQ(sink.Asked(), 0);
    EXPECT_EQ(sink.Written(), 0);
}

TEST_F(TracingTest, TheFlagAloneIsNotEnoughForATrace) {
    m_traces.reset();
    CountingSink sink(false);
    AdDiagnosticSink* former = AdDiagnostic::SetSink(&sink);
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    RunEverything();
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    AdDiagnostic::SetSink(former);
    EXPECT_GT(sink.Asked(), 0);
    EXPECT_EQ(sink.Written(), 0);
}

TEST_F(TracingTest, OffChangesNeitherErrorTextsNorCalls) {
    const Lines errors = RunEverything();
    Lines calls = m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion});
    EXPECT_FALSE(Trace().empty());
    m_traces.reset();
    m_core.ForgetCalls();
    m_core.StartDbIdsAgain();
    m_importer = std::make_unique<OpenImporter>();
    m_importer->SetSession(AdSessionPtr(new ScriptedSession(m_core)));
    EXPECT_EQ(RunEverything(), errors);
    EXPECT_EQ(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion}), calls);
    EXPECT_TRUE(Trace().empty());
}

}  // namespace
