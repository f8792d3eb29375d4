#include <gtest/gtest.h>

#include <memory>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// AddAttachment: the attachments of one field.

namespace {

class AttachmentsTest : public ImporterTest {
  protected:
    void Add(const std::vector<Pairs>& attachments) {
        AdEntityPtr bug = GivenOpenBug();
        std::vector<std::unique_ptr<CMapStringToString>> maps;
        OpenImporter::EntryList list;
        for (const Pairs& attachment : attachments) {
            maps.push_back(std::make_unique<CMapStringToString>());
            for (const auto& [key, value] : attachment) {
                maps.back()->SetAt(Obx_String::FromUtf8(key), Obx_String::FromUtf8(value));
            }
            list.push_back(maps.back().get());
        }
        m_importer->AddAttachment(bug, u"files", list, m_error);
    }

    static Pairs File(const std::string& fileName, const std::string& dbid = "7") {
        return {{"dbid", dbid},
                {"filename", fileName},
                {"filesize", "12"},
                {"description", "about " + fileName}};
    }

    // Attachments that the record has, as the core gives them.
    void GivenExisting(const std::vector<std::string>& fileNames) {
        std::vector<Obx_String> values;
        for (const std::string& fileName : fileNames) {
            values.push_back(Obx_String::FromUtf8("1\n" + fileName + "\n9\nold"));
        }
        m_core.SetFieldValues(u"files", values);
    }

    static Lines Read() { return {"GetFieldValue(files)", "files.GetValueStatus()"}; }
    static std::string ReadValues() { return "files.GetValues()"; }
    static std::string Delete(const std::string& fileName) {
        return "DeleteAttachment(files, 1\n" + fileName + "\n9\nold)";
    }
    static std::string AddCall(const std::string& fileName) {
        return "AddAttachment(files, " + fileName + ", about " + fileName + ")";
    }
    static std::string BeginTrace(int size) {
        return "AddAttachment begins, field name: files, attachments size: " + std::to_string(size);
    }
    static Obx_String FailureText(const Obx_String& dbid) {
        return Message(message_id::kAttachmentFailed, {{u"_attachmentid_", dbid}}) + u"\n";
    }
};

TEST_F(AttachmentsTest, EachEntryIsAddedWithItsDescription) {
    Add({File("a.txt"), File("b.txt")});
    ExpectErrorText(u"");
    ExpectStory(Joined(Lines{"trace: " + BeginTrace(2)}, Read(),
                       Lines{AddCall("a.txt"), AddCall("b.txt"), "trace: AddAttachment ends"}));
}

TEST_F(AttachmentsTest, NoEntriesOnlyReadTheField) {
    Add({});
    ExpectStory(
        Joined(Lines{"trace: " + BeginTrace(0)}, Read(), Lines{"trace: AddAttachment ends"}));
}

class FieldWithoutValueTest : public AttachmentsTest, public testing::WithParamInterface<long> {};

TEST_P(FieldWithoutValueTest, IsNotReadForExistingOnes) {
    GivenExisting({"a.txt"});
    m_core.OnCall("GetValueStatus").ReturnsNumber(GetParam());
    Add({File("a.txt")});
    ExpectCalls(Joined(Read(), Lines{AddCall("a.txt")}));
}

INSTANTIATE_TEST_SUITE_P(Statuses, FieldWithoutValueTest, testing::Values(-1L, 0L, 1L, 3L));

TEST_F(AttachmentsTest, AnExistingOneOfTheSameNameIsReplaced) {
    GivenExisting({"a.txt", "b.txt"});
    Add({File("b.txt")});
    ExpectCalls(Joined(Read(), Lines{ReadValues(), Delete("b.txt"), AddCall("b.txt")}));
}

TEST_F(AttachmentsTest, ExistingOnesOfOtherNamesAreKept) {
    GivenExisting({"a.txt", "b.txt"});
    Add({File("c.txt")});
    ExpectCalls(Joined(Read(), Lines{ReadValues(), AddCall("c.txt")}));
}

TEST_F(AttachmentsTest, NamesAreComparedWithoutFoldersAndCase) {
    GivenExisting({"old/folder/A.txt"});
    Add({File("new\\a.TXT")});
    ExpectCalls(
        Joined(Read(), Lines{ReadValues(), Delete("old/folder/A.txt"), AddCall("new\\a.TXT")}));
}

TEST_F(AttachmentsTest, OnlyTheFirstExistingOneOfTheNameIsReplaced) {
    GivenExisting({"x/a.txt", "y/a.txt"});
    Add({File("a.txt")});
    ExpectCalls(Joined(Read(), Lines{ReadValues(), Delete("x/a.txt"), AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, OfTwoEntriesOfOneNameOnlyTheFirstReplaces) {
    GivenExisting({"a.txt"});
    Add({File("a.txt"), File("a.txt")});
    ExpectCalls(
        Joined(Read(), Lines{ReadValues(), Delete("a.txt"), AddCall("a.txt"), AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, TwoEntriesReplaceTwoExistingOnesOfTheName) {
    GivenExisting({"x/a.txt", "y/a.txt"});
    Add({File("a.txt"), File("a.txt")});
    ExpectCalls(Joined(Read(), Lines{ReadValues(), Delete("x/a.txt"), AddCall("a.txt"),
                                     Delete("y/a.txt"), AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, AnExistingOneMayEndWithItsName) {
    m_core.SetFieldValues(u"files", {u"1\na.txt"});
    Add({File("a.txt")});
    ExpectCalls(
        Joined(Read(), Lines{ReadValues(), "DeleteAttachment(files, 1\na.txt)", AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, BlanksBelongToAName) {
    GivenExisting({"a.txt"});
    Add({{{"filename", " a.txt "}, {"description", " about "}}});
    ExpectCalls(Joined(Read(), Lines{ReadValues(), "AddAttachment(files,  a.txt ,  about )"}));
}

TEST_F(AttachmentsTest, AnExistingOneWhoseDeletionFailsIsNotTriedAgain) {
    GivenExisting({"a.txt", "b.txt"});
    m_core.OnCall("DeleteAttachment").ReturnsText(u"cannot");
    Add({File("a.txt"), File("a.txt")});
    ExpectErrorText(u"");
    ExpectCalls(
        Joined(Read(), Lines{ReadValues(), Delete("a.txt"), AddCall("a.txt"), AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, AnExistingOneWithoutASecondLineHasNoName) {
    m_core.SetFieldValues(u"files", {u"a.txt", u""});
    Add({File("a.txt")});
    ExpectErrorText(u"");
    ExpectCalls(Joined(Read(), Lines{ReadValues(), AddCall("a.txt")}));
}

TEST_F(AttachmentsTest, AFailedDeletionIsNotLookedAt) {
    GivenExisting({"a.txt"});
    m_core.OnCall("DeleteAttachment").ReturnsText(u"cannot");
    Add({File("a.txt")});
    ExpectErrorText(u"");
    EXPECT_EQ(Calls().back(), AddCall("a.txt"));
}

TEST_F(AttachmentsTest, KeysAreMatchedWithoutRegardToCase) {
    Add({{{"FileName", "a.txt"}, {"DESCRIPTION", "about a.txt"}}});
    EXPECT_EQ(Calls().back(), AddCall("a.txt"));
}

TEST_F(AttachmentsTest, AnEntryWithoutANameIsStillGivenToTheCore) {
    m_core.OnCall("AddAttachment").ReturnsText(u"no name");
    Add({{{"dbid", "7"}}});
    ExpectErrorText(FailureText(u"7"));
    EXPECT_EQ(Calls().back(), "AddAttachment(files, '', '')");
}

TEST_F(AttachmentsTest, ARefusalIsReportedWithTheEntrysId) {
    m_core.OnCall("AddAttachment").ReturnsText(u"no such file");
    m_error = u"earlier";
    Add({File("a.txt", "7")});
    ExpectErrorText(FailureText(u"7"));
    ExpectTrace(
        {BeginTrace(1),
         "AddAttachment error: " + FailureText(u"7").ToUtf8() + ", Core error: no such file",
         "AddAttachment ends"});
}

TEST_F(AttachmentsTest, AnEntryWithoutIdIsReportedWithAnEmptyOne) {
    m_core.OnCall("AddAttachment").ReturnsText(u"no such file");
    Add({{{"filename", "a.txt"}}});
    ExpectErrorText(FailureText(u""));
}

TEST_F(AttachmentsTest, ARefusalDoesNotStopTheOthersAndTheLastOneIsReported) {
    m_core.OnCall("AddAttachment", 1).ReturnsText(u"no such file");
    m_core.OnCall("AddAttachment", 2).ReturnsText(u"too large");
    Add({File("a.txt", "7"), File("b.txt", "8"), File("c.txt", "9")});
    ExpectErrorText(FailureText(u"8"));
    ExpectCalls(Joined(Read(), Lines{AddCall("a.txt"), AddCall("b.txt"), AddCall("c.txt")}));
}

TEST_F(AttachmentsTest, TheFieldsValueIsReleasedRightAfterUse) {
    GivenExisting({"a.txt"});
    Add({File("a.txt")});
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kCall});
    EXPECT_EQ(Lines(lines.begin() + 2, lines.begin() + 5),
              (Lines{ReadValues(), "release: value of files", Delete("a.txt")}));
}

TEST_F(AttachmentsTest, AMissingRecordIsABadValue) {
    OpenImporter::EntryList none;
    m_importer->AddAttachment(nullptr, u"files", none, m_error);
    ExpectBadValue(u"entity != __null");
}

class AttachmentsThrowTest : public AttachmentsTest,
                             public testing::WithParamInterface<ThrownCase> {};

TEST_P(AttachmentsThrowTest, AppendsToTheErrorTextAndEnds) {
    GivenExisting({"a.txt"});
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    Add({File("a.txt"), File("b.txt")});
    const Obx_String text = u"earlier" + AppendedTextOf(GetParam().kind, u"boom");
    ExpectErrorText(text);
    ExpectTrace({BeginTrace(2), "AddAttachment ends with error: " + text.ToUtf8()});
    EXPECT_NE(Calls().back().find(GetParam().call.name), std::string::npos)
        << "nothing else is called";
}

INSTANTIATE_TEST_SUITE_P(EveryCall, AttachmentsThrowTest,
                         testing::ValuesIn(EachKindAt({{"GetFieldValue"},
                                                       {"GetValueStatus"},
                                                       {"GetValues"},
                                                       {"DeleteAttachment"},
                                                       {"AddAttachment"},
                                                       {"AddAttachment", 2}})),
                         NameOfCase);

}  // namespace
