#include <gtest/gtest.h>

#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/throwing_sink.h"
#include "tests/ztimporter/thrown_cases.h"

// Everything that happens in a packet, from its first trace to its last: calls, questions, the
// traces of all classes and what is released when.

namespace {

class WholeTracesTest : public ImporterTest {
  protected:
    void ExpectAll(const Lines& lines) {
        const Lines all = m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion,
                                              CallLog::Kind::kTrace, CallLog::Kind::kOtherTrace,
                                              CallLog::Kind::kRelease});
        std::string expected;
        std::string happened;
        for (const std::string& line : lines) {
            expected += line + "\n";
        }
        for (const std::string& line : all) {
            happened += line + "\n";
        }
        EXPECT_EQ(expected, happened);
    }

    static std::string Importing(const std::string& text) { return "trace: Import " + text; }
    static std::string Configuring(const std::string& text) {
        return "trace: AdImportConfigurationDataParser: " + text;
    }
    static std::string Parsing(const std::string& text) {
        return "trace: AdImportRecordParser: " + text;
    }
    static std::string Length(const std::string& text, std::size_t length) {
        return text + ", m_strXML length = " + std::to_string(length);
    }

    static Lines Item(const std::string& item, const std::string& value) {
        return {Configuring("GetConfigString, item = " + item),
                Configuring("GetConfigString, value = " + value)};
    }

    // A packet's beginning, up to the question which kind it is.
    static Lines Begin(std::size_t length) {
        return {Importing("begins, xml_packet length = " + std::to_string(length)),
                Configuring("Constructor"), Configuring(Length("SetInputData", length)),
                Configuring("IsConfigurationData")};
    }
    static Lines BeginData(std::size_t length) {
        return Joined(Begin(length), Lines{Importing("is record data"), Parsing("Constructor"),
                                           Parsing(Length("SetInputData", length))});
    }
    static Lines End() {
        return {Parsing("Destructor"), Configuring("Destructor"), Importing("ends successfully.")};
    }
    // The walk that finds the record that `packet` begins its rest with.
    static Lines Next(const std::string& packet, const std::string& rest) {
        const std::size_t at = packet.find(rest);
        return {Parsing(Length("NextRecord", packet.size() - at))};
    }
    static Lines NoNext(const std::string& packet) {
        // One byte after the beginning of the last record.
        return {Parsing(Length("NextRecord", packet.size() - packet.rfind("<record>") - 1))};
    }
    // The record map of a bug, to which nothing is left over from another.
    static Lines SetUpMap(int fields) {
        return {"trace: SetupRecordMap begins",
                Parsing("GetRecordMap, fields number = " + std::to_string(fields)),
                "bug.GetType()",
                "bug.GetStateFieldDef()",
                "state.GetName()",
                "trace: SetupRecordMap ends"};
    }
    // The search for bugs by source_id, up to the end that its result set is kept for.
    static Lines SearchBug(const std::string& value) {
        const std::string query = "source_id = " + value;
        return {"trace: GetResultSetWhere begins: filed=source_id, value=" + value,
                "bug.GetFieldDef(source_id, 0)",
                "BuildQueryDef(bug, 0)",
                "SelectDbId(1)",
                "source_id.GetName()",
                "BuildFilter(null, source_id, 1, " + value + ", 1)",
                "BuildResultSet(" + query + ")",
                "SetRowLimit(100)",
                "Prepare()",
                "Execute()",
                "FetchNext(1)",
                "UnbuildQueryDef(" + query + ")",
                "release: query of " + query,
                "trace: GetResultSetWhere ends successfully",
                "GetRowCount()"};
    }
    static Lines UnbuildBug(const std::string& value) {
        return {"UnbuildResultSet(source_id = " + value + ")",
                "release: result set of source_id = " + value};
    }
    static Lines BatchOne() {
        return {Parsing("ExtractHistoryData, result size = 1"),
                "GetFieldValue(dbid)",
                "dbid.GetValue()",
                "release: value of dbid",
                "trace: AddHistory begins",
                "bug.GetDbId()",
                "bug.GetName()",
                "trace: AddHistory ends"};
    }
    static Lines FlushOne() {
        return {"trace: ReallyImportHistory begins",
                "ImportHistoryData(1 entries, -1, 0 problems, '', null, null)",
                "CommitImportHistory()", "trace: ReallyImportHistory ends"};
    }
};

TEST_F(WholeTracesTest, OfAConfigurationPacket) {
    const std::string packet = Configuration{
        .duplicateId = "duplicate_of",
        .updateRecord = true,
        .mapping = {
            {"owner", "mail"}}}.Packet();
    Import(packet);
    ExpectErrorText(u"");
    ExpectAll(Joined(Begin(packet.size()), Lines{Importing("IsConfigurationData")},
                     Item("record_type", "bug"), Lines{"GetEntityDef(bug)"},
                     Item("original_id", "source_id"), Item("duplicate_id", "duplicate_of"),
                     Item("import_data", "record"), Item("importstate", "FALSE"),
                     Item("updaterecord", "TRUE"), Item("replacereflist", "FALSE"),
                     Item("updateinsert", "FALSE"),
                     Lines{Configuring("GetReferenceMapping, type = record_reference_mapping_list"),
                           Configuring("Destructor"), Importing("ends successfully.")}));
}

TEST_F(WholeTracesTest, OfAPacketThatCreatesARecord) {
    GivenConfiguration({.duplicateId = "duplicate_of", .mapping = {{"owner", "mail"}}});
    GivenRecords(u"core-9", {u"33"});
    m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann"};
    const std::string packet =
        Packet({Record({{"source_id", "core-1"},
                        {"duplicate_of", "core-9"},
                        {"owner", "a@b"},
                        {"keywords", "ui,slow"},
                        {"log", ManyHistoryLines(1)},
                        {"files", AttachmentLines("7", "a.txt", "about")}})});
    Import(packet);
    ExpectErrorText(u"");
    const Lines fields = {"ImportEntity(bug, '', null)",
                          "trace: SetupFieldValues begins",
                          "GetFieldType(source_id)",
                          "SetFieldValue(source_id, core-1, 1)",
                          "GetFieldType(owner)",
                          "GetEntityDef()",
                          "bug.GetFieldDef(owner, 0)",
                          "owner.GetReferenceEntityDef()",
                          "user.GetType()",
                          "user.NumUniqueKeyFieldDefs()",
                          "user.GetUniqueKeyFieldDefLabels()",
                          "trace: IsReferenceIDValid begins, fieldName: owner, fieldValue: a@b, "
                          "referencedFieldName: mail, uniqueKey: login",
                          "GetEntityDef()",
                          "bug.GetFieldDef(owner, 0)",
                          "owner.GetReferenceEntityDef()",
                          "BuildQueryDef(user, 0)",
                          "user.GetFieldPath(login, 0)",
                          "SelectField(1, path of login)",
                          "BuildFilter(null, mail, 1, a@b, 1)",
                          "BuildResultSet(mail = a@b)",
                          "Prepare()",
                          "Execute()",
                          "FetchNext(1)",
                          "GetRowCount()",
                          "GetColumn(1, 0)",
                          "UnbuildResultSet(mail = a@b)",
                          "release: result set of mail = a@b",
                          "UnbuildQueryDef(mail = a@b)",
                          "release: query of mail = a@b",
                          "trace: IsReferenceIDValid ends",
                          "SetFieldValue(owner, ann, 1)",
                          "GetFieldType(keywords)",
                          Parsing("SplitReferenceListValue, result size = 2"),
                          "AddFieldValue(keywords, ui, 1)",
                          "AddFieldValue(keywords, slow, 1)",
                          "GetFieldType(log)"};
    const Lines files = {"GetFieldType(files)",
                         Parsing("ExtractAttachmentData, result size = 1"),
                         "trace: AddAttachment begins, field name: files, attachments size: 1",
                         "GetFieldValue(files)",
                         "files.GetValueStatus()",
                         "release: value of files",
                         "AddAttachment(files, a.txt, about)",
                         "trace: AddAttachment ends",
                         "trace: SetupFieldValues ends",
                         "Validate()",
                         "Commit()"};
    const Lines marked = {"GetColumn(1, 0)",
                          "GetEntity(bug, 33)",
                          "GetEntityDef()",
                          "bug.LookupActionDef(4)",
                          "MarkEntityAsDuplicate(bug 101, bug 33, duplicate, 1)",
                          "release: bug 33",
                          "Validate()",
                          "Commit()"};
    ExpectAll(Joined(BeginData(packet.size()), Next(packet, "<record>"),
                     Lines{"trace: ImportRecord begins"}, SetUpMap(6), fields, BatchOne(), files,
                     FlushOne(), Lines{"trace: MarkDuplicates begins"}, SearchBug("core-9"), marked,
                     UnbuildBug("core-9"),
                     Lines{"trace: MarkDuplicates ends successfully", "trace: CleanupRecordMap",
                           "release: bug 101", "trace: ImportRecord ends"},
                     NoNext(packet), End()));
}

TEST_F(WholeTracesTest, OfAPacketThatUpdatesARecord) {
    GivenConfiguration({.updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    const std::string packet = Packet({Record({{"source_id", "core-1"}, {"state", "OPEN"}})});
    Import(packet);
    ExpectErrorText(u"");
    ExpectAll(
        Joined(BeginData(packet.size()), Next(packet, "<record>"),
               Lines{"trace: UpdateRecord begins: m_originalID=source_id, m_originalID_value="},
               SetUpMap(2), SearchBug("core-1"),
               Lines{"GetColumn(1, 0)", "ImportEntity(bug, '', 33)",
                     "trace: SetupFieldValues begins", "GetFieldType(source_id)",
                     "SetFieldValue(source_id, core-1, 1)", "trace: SetupFieldValues ends",
                     "Validate()", "Commit()", "trace: ReallyImportHistory begins",
                     "trace: ReallyImportHistory ends with no history imported"},
               UnbuildBug("core-1"),
               Lines{"trace: CleanupRecordMap", "release: bug 33",
                     "trace: UpdateRecord ends successfully"},
               NoNext(packet), End()));
}

TEST_F(WholeTracesTest, OfAHistoryPacket) {
    GivenConfiguration({.importData = "history"});
    GivenRecords(u"core-1", {u"33"});
    const std::string packet =
        Packet({Record({{"source_id", "core-1"}, {"history", ManyHistoryLines(1)}})});
    Import(packet);
    ExpectErrorText(u"");
    const Lines read = {Parsing("ExtractHistoryData, result size = 1"), "bug.GetType()"};
    Lines batch = BatchOne();
    batch.erase(batch.begin());
    ExpectAll(Joined(
        BeginData(packet.size()), Lines{"trace: ImportHistory begins: m_originalID=source_id"},
        Next(packet, "<record>"), SetUpMap(2), read, SearchBug("core-1"),
        Lines{"GetColumn(1, 0)", "ImportEntity(bug, '', 33)"}, batch, FlushOne(),
        Lines{"UpdateImportHistoryExpiredTimestamp(bug, 33)", "Validate()", "Commit()"},
        UnbuildBug("core-1"), Lines{"trace: CleanupRecordMap", "release: bug 33"}, NoNext(packet),
        Lines{"trace: ImportHistory ends successfully"}, End()));
}

TEST_F(WholeTracesTest, OfAnAttachmentsPacket) {
    GivenConfiguration({.importData = "attachments"});
    GivenRecords(u"core-1", {u"33"});
    m_core.SetFieldValues(u"files", {u"1\na.txt\n9\nold"});
    const std::string packet = Packet(
        {Record({{"source_id", "core-1"}, {"files", AttachmentLines("7", "a.txt", "about")}})});
    Import(packet);
    ExpectErrorText(u"");
    ExpectAll(Joined(BeginData(packet.size()), Lines{"trace: ImportAttachment begins"},
                     Next(packet, "<record>"), SetUpMap(2),
                     Lines{"bug.GetAttachmentFieldDefNames()",
                           Parsing("ExtractAttachmentData, result size = 1"), "bug.GetType()"},
                     SearchBug("core-1"),
                     Lines{"GetColumn(1, 0)", "ImportEntity(bug, '', 33)",
                           "trace: AddAttachment begins, field name: files, attachments size: 1",
                           "GetFieldValue(files)", "files.GetValueStatus()", "files.GetValues()",
                           "release: value of files", "DeleteAttachment(files, 1\na.txt\n9\nold)",
                           "AddAttachment(files, a.txt, about)", "trace: AddAttachment ends",
                           "Validate()", "Commit()"},
                     UnbuildBug("core-1"), Lines{"trace: CleanupRecordMap", "release: bug 33"},
                     NoNext(packet), Lines{"trace: ImportAttachment ends successfully"}, End()));
}

TEST_F(WholeTracesTest, OfAPacketThatAnExceptionEndsAndOfTheNextOne) {
    GivenConfiguration();
    const std::string packet = "<records/>";
    {
        ThrowingSink sink(m_core.Log(), ThrownKind::kUnknown, "NextRecord,");
        Import(packet);
    }
    // Neither parser is destroyed.
    ExpectAll(Joined(BeginData(packet.size()),
                     Lines{Importing("ends with error: \nCaught an unknown exception")}));
    EXPECT_NE(m_importer->m_recordParser, nullptr);
    m_core.Log().Clear();
    Import(packet);
    // Nor is the one left behind when another takes its place.
    ExpectAll(Joined(BeginData(packet.size()), Lines{Parsing(Length("NextRecord", packet.size()))},
                     End()));
    EXPECT_EQ(m_importer->m_recordParser, nullptr);
}

TEST_F(WholeTracesTest, OfAPacketThatIsRefused) {
    const std::string packet = "<records/>";
    Import(packet);
    ExpectAll(Joined(
        Begin(packet.size()),
        Lines{Importing("is record data"), Importing("ends with error: " + m_error.ToUtf8())}));
}

// A session that says when it ends.
class NotedSession : public ScriptedSession {
  public:
    explicit NotedSession(ScriptedCore& core) : ScriptedSession(core), m_noted(core) {
        core.HandleMade();
    }

  protected:
    ~NotedSession() override { m_noted.HandleReleased("session"); }

  private:
    ScriptedCore& m_noted;
};

TEST_F(WholeTracesTest, OfTheEndOfAnImporterThatHoldsAParser) {
    GivenCurrentRecord({{"title", "Crash"}});
    m_importer->SetSession(AdSessionPtr(new NotedSession(m_core)));
    m_core.ForgetCalls();
    m_importer.reset();
    ExpectAll({"trace: Destructor", Parsing("Destructor"), "release: session"});
}

TEST_F(WholeTracesTest, OfAnotherSession) {
    m_importer->SetSession(AdSessionPtr(new NotedSession(m_core)));
    m_core.ForgetCalls();
    m_importer->SetSession(nullptr);
    ExpectAll({"trace: SetSession", "release: session"});
}

}  // namespace
