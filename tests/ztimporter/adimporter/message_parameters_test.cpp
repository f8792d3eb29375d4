// What the importer's messages are made of. A message's text does not show its type, nor the order
// in which its parameters were set, so this program gives the platform another FullMsg.

#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "platform/messages/pamessage.h"
#include "tests/ztimporter/history_fixture.h"

Obx_String PaMessage::FullMsg() const {
    Obx_String text;
    text.Format(u"[%d of type %d", m_id, m_type);
    for (const auto& [name, value] : m_parameters) {
        text += u" " + name + u"=" + value;
    }
    return text + u"]";
}

namespace {

class MessageParametersTest : public HistoryTest {
  protected:
    void ExpectText(const std::string& text) { EXPECT_EQ(text, m_error.ToUtf8()); }

    int LookUpOwner() {
        AdEntityPtr bug = GivenOpenBug();
        Obx_String value = u"a@b";
        return m_importer->IsReferenceIDValid(bug, u"owner", value, u"mail", u"login", m_error);
    }

    int MarkDuplicate() {
        m_importer->m_duplicateID = u"duplicate_of";
        m_importer->m_duplicateID_value = u"core-9";
        AdEntityPtr bug = GivenOpenBug();
        return m_importer->MarkDuplicates(bug, m_error);
    }

    static std::string Core(const Obx_String& text) { return CoreMessage(text).FullMsg().ToUtf8(); }
    static std::string About(const char* line) {
        return std::string(" _linenum_=") + line + " _id_=source_id _idvalue_=core-1]]";
    }
};

TEST_F(MessageParametersTest, OfAPacketWithoutConfiguration) {
    ImportRecords({});
    ExpectText("[15867 of type 3]");
}

TEST_F(MessageParametersTest, OfAnUnknownRecordType) {
    Import(Configuration{.recordType = "bugg"}.Packet());
    ExpectText("[15873 of type 3 _datatype_=bugg]");
    EXPECT_EQ(Trace().back(), "Import ends with error: " + m_error.ToUtf8() +
                                  ", Core error: " + Core(u"no record type bugg"));
}

TEST_F(MessageParametersTest, OfHistoryLines) {
    Add({With(ValidEntry("7"), "action_timestamp", "x")});
    ExpectText("[15872 of type 3 _historyid_=7 _coreinfo_=[15861 of type 3 _value_=x" + About("1") +
               "\n");
    Add({ValidEntry("7"), With(ValidEntry("8"), "expired_timestamp", "y")});
    ExpectText("[15872 of type 3 _historyid_=8 _coreinfo_=[15862 of type 3 _value_=y" + About("2"));
    m_error = u"";
    Add({With(ValidEntry("9"), "old_state", "")});
    ExpectText(
        "[15872 of type 3 _historyid_=9 _coreinfo_=[15875 of type 3 "
        "_field_name_=old_state" +
        About("1") + "\n");
}

TEST_F(MessageParametersTest, OfReferences) {
    EXPECT_EQ(LookUpOwner(), 0);
    ExpectText("[15865 of type 3 _entitydef_=bug _fieldname_=owner _refentitydef_=user]");
    m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann", u"bea"};
    EXPECT_EQ(LookUpOwner(), 0);
    ExpectText("[15868 of type 3 _entitydef_=bug _fieldname_=owner _refentitydef_=user]");
}

TEST_F(MessageParametersTest, OfAnAttachment) {
    GivenConfiguration({.importData = "attachments"});
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("AddAttachment").ReturnsText(u"refused");
    ImportRecords({{{"source_id", "core-1"}, {"files", AttachmentLines("7", "a.txt", "")}}});
    ExpectText("[15866 of type 3 _attachmentid_=7]\n");
}

struct Unsaved {
    const char* call;
    const char* id;
};

class UnsavedMessageTest : public MessageParametersTest,
                           public testing::WithParamInterface<Unsaved> {
  protected:
    void SetUp() override {
        m_core.OnCall(GetParam().call).Reports(CoreMessage(u"refused"));
        GivenRecords(u"core-1", {u"33"});
        GivenRecords(u"core-9", {u"39"});
    }
    static std::string Wrapped() {
        return "[" + std::string(GetParam().id) + " of type 3 _coreinfo_=" + Core(u"refused") + "]";
    }
};

TEST_P(UnsavedMessageTest, WrapsTheCoresTextButForUpdates) {
    const Pairs record = {{"source_id", "core-1"},
                          {"history", ManyHistoryLines(1)},
                          {"files", AttachmentLines("7", "a.txt", "")}};
    for (const char* importData : {"history", "attachments"}) {
        GivenConfiguration({.importData = importData});
        m_importer->CleanupRecordMap();
        ImportRecords({record});
        ExpectText(Wrapped());
    }
    GivenConfiguration();
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectText(Wrapped());
    GivenConfiguration({.updateRecord = true});
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectText(Core(u"refused"));
    EXPECT_EQ(MarkDuplicate(), 0);
    ExpectText(Wrapped());
}

INSTANTIATE_TEST_SUITE_P(Steps, UnsavedMessageTest,
                         testing::Values(Unsaved{"Validate", "15869"}, Unsaved{"Commit", "15870"}),
                         [](const auto& instance) { return std::string(instance.param.call); });

TEST_F(MessageParametersTest, OfRecordsThatAreNotOne) {
    const std::vector<std::pair<std::vector<Obx_String>, std::string>> cases = {
        {{}, "15871"}, {{u"1", u"2"}, "15874"}};
    for (const auto& [dbIds, id] : cases) {
        GivenRecords(u"core-9", dbIds);
        const std::string text =
            "[" + id + " of type 3 _datatype_=bug _field_=source_id _value_=core-9]";
        EXPECT_EQ(MarkDuplicate(), 0);
        ExpectText(text);
        for (const char* importData : {"record", "history", "attachments"}) {
            GivenConfiguration({.importData = importData, .updateRecord = true});
            ImportRecords({{{"source_id", "core-9"},
                            {"history", ManyHistoryLines(1)},
                            {"files", AttachmentLines("7", "a.txt", "")}}});
            ExpectText(text);
        }
    }
}

TEST_F(MessageParametersTest, OfADuplicateThatCannotBeMarked) {
    GivenRecords(u"core-9", {u"39"});
    m_core.OnCall("MarkEntityAsDuplicate").Throws(ThrownKind::kMessage);
    EXPECT_EQ(MarkDuplicate(), 0);
    ExpectText(
        "[15864 of type 3 _parentid_=dbid _parentidvalue_=39 _entityid_=source_id "
        "_entityidvalue_=core-1]");
}

TEST_F(MessageParametersTest, OfAValueThatCannotBeUsed) {
    GivenRecordMap({{"title", "Crash"}});
    EXPECT_EQ(m_importer->SetupFieldValues(nullptr, m_error), 0);
    Obx_String id;
    id.Format(u"%d", message_id::kBadValue);
    EXPECT_TRUE(
        m_error.ToUtf8().starts_with("\n[" + id.ToUtf8() +
                                     " of type 3 _text_=entity != __null in field_writer.cpp "
                                     "_file_=ztimporter/adimporter _line_="))
        << m_error.ToUtf8();
}

}  // namespace
