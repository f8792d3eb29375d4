#include <gtest/gtest.h>

#include "tests/ztimporter/importer_fixture.h"

// What the four operations on records return on each way out. Import ignores it, so no other test
// would notice.

namespace {

struct WayOut {
    const char* operation;
    int (OpenImporter::*run)(Obx_String&);
    const char* cause;
    int result;
};

class ReturnValuesTest : public ImporterTest, public testing::WithParamInterface<WayOut> {
  protected:
    void SetUp() override {
        m_bug.Field(u"history", ad_field_type::kHistory);
        m_importer->m_originalID = u"source_id";
        m_importer->m_duplicateID = u"duplicate_of";
        m_importer->m_updateInsert = 0;
        GivenRecords(u"core-1", {u"33"});
        GivenRecords(u"core-9", {u"39"});
    }

    Pairs m_record = {{"source_id", "core-1"},
                      {"title", "Crash"},
                      {"history", ManyHistoryLines(1)},
                      {"files", AttachmentLines("7", "a.txt", "about")},
                      {"duplicate_of", "core-9"}};

    void GivenCause(const std::string& cause) {
        if (cause == "NotFound" || cause == "Inserted") {
            GivenRecords(u"core-1", {});
            m_importer->m_updateInsert = cause == "Inserted" ? 1 : 0;
        } else if (cause == "NoRows" || cause == "Several" || cause == "Uncounted") {
            GivenRowCount(u"core-1", cause == "NoRows" ? 0 : cause == "Several" ? 2 : -1);
        } else if (cause == "FieldRefused") {
            m_core.OnCall("SetFieldValue", 2).ReturnsText(u"refused");
        } else if (cause == "FileRefused") {
            m_core.OnCall("AddAttachment").ReturnsText(u"refused");
        } else if (cause == "LineRefused") {
            m_record[2].second += "8\tyesterday\n";
        } else if (cause == "Problems") {
            m_core.OnCall("ImportHistoryData").ReturnsText(u"refused");
        } else if (cause == "Invalid") {
            m_core.OnCall("Validate").Reports(CoreMessage(u"refused"));
        } else if (cause == "NotWritten") {
            m_core.OnCall("Commit").Reports(CoreMessage(u"refused"));
        } else if (cause == "NoOriginal") {
            GivenRecords(u"core-9", {});
        } else if (cause == "Exception") {
            m_core.OnCall("ImportEntity").Throws(ThrownKind::kText);
        } else if (cause == "RevertThrows") {
            m_core.OnCall("Validate").Reports(CoreMessage(u"refused"));
            m_core.OnCall("Revert").Throws(ThrownKind::kText);
        } else if (cause == "NothingToAdd") {
            m_record = {{"source_id", "core-1"}};
        }
    }
};

TEST_P(ReturnValuesTest, TellWhetherItWentThrough) {
    const std::string cause = GetParam().cause;
    GivenCause(cause);
    const std::string operation = GetParam().operation;
    const bool walks = operation == "ImportHistory" || operation == "ImportAttachment";
    if (walks) {
        GivenPacket(cause == "NoRecords" ? "<records/>" : Record(m_record));
    } else {
        GivenCurrentRecord(m_record);
    }
    m_error = cause == "Earlier" ? u"earlier" : u"";
    EXPECT_EQ(((*m_importer).*GetParam().run)(m_error), GetParam().result);
    EXPECT_EQ(m_error.IsEmpty(), GetParam().result != 0);
}

std::vector<WayOut> WaysOut(const char* operation, int (OpenImporter::*run)(Obx_String&),
                            const std::vector<const char*>& successes,
                            const std::vector<const char*>& failures) {
    std::vector<WayOut> ways;
    for (const char* cause : successes) {
        ways.push_back({operation, run, cause, 1});
    }
    for (const char* cause : failures) {
        ways.push_back({operation, run, cause, 0});
    }
    return ways;
}

std::string NameOfWay(const testing::TestParamInfo<WayOut>& instance) {
    return instance.param.cause;
}

INSTANTIATE_TEST_SUITE_P(
    ImportRecord, ReturnValuesTest,
    testing::ValuesIn(WaysOut("ImportRecord", &OpenImporter::ImportRecord, {"WentThrough"},
                              {"Earlier", "FieldRefused", "FileRefused", "LineRefused", "Invalid",
                               "NotWritten", "Problems", "NoOriginal", "Exception",
                               "RevertThrows"})),
    NameOfWay);

INSTANTIATE_TEST_SUITE_P(UpdateRecord, ReturnValuesTest,
                         testing::ValuesIn(WaysOut("UpdateRecord", &OpenImporter::UpdateRecord,
                                                   {"WentThrough", "Inserted", "Uncounted"},
                                                   {"Earlier", "NotFound", "NoRows", "Several",
                                                    "FieldRefused", "FileRefused", "LineRefused",
                                                    "Invalid", "NotWritten", "Problems",
                                                    "NoOriginal", "Exception", "RevertThrows"})),
                         NameOfWay);

INSTANTIATE_TEST_SUITE_P(
    ImportHistory, ReturnValuesTest,
    testing::ValuesIn(WaysOut("ImportHistory", &OpenImporter::ImportHistory,
                              {"WentThrough", "NoRecords", "NothingToAdd", "Uncounted"},
                              {"Earlier", "NotFound", "NoRows", "Several", "LineRefused", "Invalid",
                               "NotWritten", "Problems", "Exception", "RevertThrows"})),
    NameOfWay);

INSTANTIATE_TEST_SUITE_P(
    ImportAttachment, ReturnValuesTest,
    testing::ValuesIn(WaysOut("ImportAttachment", &OpenImporter::ImportAttachment,
                              {"WentThrough", "NoRecords", "NothingToAdd", "Uncounted"},
                              {"Earlier", "NotFound", "NoRows", "Several", "FileRefused", "Invalid",
                               "NotWritten", "Exception", "RevertThrows"})),
    NameOfWay);

}  // namespace
