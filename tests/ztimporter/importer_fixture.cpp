#include "tests/ztimporter/importer_fixture.h"

#include <algorithm>
#include <filesystem>
#include <regex>

#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "platform/messages/pamessage.h"
#include "ztimporter/importrecordparser.h"

namespace {

// One text, so that a failed comparison shows the difference line by line.
std::string OneText(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

}  // namespace

long Count(const Lines& lines, const std::string& line) {
    return std::count(lines.begin(), lines.end(), line);
}

Obx_String Message(int id, const std::vector<std::pair<Obx_String, Obx_String>>& parameters) {
    PaMessage message(id);
    message.Type(3);
    for (const auto& [name, value] : parameters) {
        message.SetParam(name, value);
    }
    return message.FullMsg();
}

Lines Search(const std::string& field, const std::string& value) {
    const std::string query = field + " = " + value;
    return {"BuildQueryDef(bug, 0)",
            "SelectDbId(1)",
            "BuildFilter(null, " + field + ", 1, " + value + ", 1)",
            "BuildResultSet(" + query + ")",
            "SetRowLimit(100)",
            "Prepare()",
            "Execute()",
            "FetchNext(1)",
            "UnbuildQueryDef(" + query + ")"};
}

ImporterTest::ImporterTest()
    : m_bug(m_core.AddRecordType(u"bug")),
      m_user(m_core.AddRecordType(u"user").Field(u"login", 1).Key({u"login"})),
      m_keyword(m_core.AddRecordType(u"keyword").Field(u"name", 1).Key({u"name"})),
      m_place(m_core.AddRecordType(u"place").Key({u"dbid", u"street", u"town"})) {
    m_bug.States(u"state").Field(u"id", ad_field_type::kDisplayId);
    for (const char16_t* name : {u"source_id", u"title", u"notes"}) {
        m_bug.Field(name, ad_field_type::kShortText);
    }
    m_bug.Reference(u"owner", ad_field_type::kReference, m_user)
        .Reference(u"parent", ad_field_type::kReference, m_bug)
        .Reference(u"place", ad_field_type::kReference, m_place)
        .Reference(u"keywords", ad_field_type::kReferenceList, m_keyword)
        .Reference(u"parents", ad_field_type::kReferenceList, m_bug)
        .Field(u"files", ad_field_type::kAttachments)
        .Field(u"pictures", ad_field_type::kAttachments)
        .Field(u"log", ad_field_type::kHistory)
        .Field(u"log2", ad_field_type::kHistory);
    m_importer = std::make_unique<OpenImporter>();
    m_importer->SetSession(AdSessionPtr(new ScriptedSession(m_core)));
    m_importer->m_entityDef = &m_bug;
    m_traces.emplace(m_core.Log());
}

ImporterTest::~ImporterTest() = default;

void ImporterTest::TearDown() {
    EXPECT_EQ(OneText(m_core.Answers().NeverAsked()), "") << "told to answer, but never called";
    EXPECT_EQ(m_core.HandlesHeld(), 0) << "handles that nobody let go of";
}

void ImporterTest::GivenConfiguration(const Configuration& configuration) {
    Import(configuration.Packet());
    ASSERT_EQ(m_error.ToUtf8(), "");
    m_core.ForgetCalls();
}

void ImporterTest::GivenRecords(const Obx_String& sourceId, const std::vector<Obx_String>& dbIds) {
    m_core.Matches(u"bug", u"source_id", sourceId).rows = dbIds;
}

void ImporterTest::GivenRowCount(const Obx_String& sourceId, long count) {
    m_core.Matches(u"bug", u"source_id", sourceId) = {.rows = {u"33"}, .count = count, .status = 1};
}

void ImporterTest::GivenPacket(const std::string& packet) {
    delete m_importer->m_recordParser;
    m_packet = packet;
    m_importer->m_recordParser = new AdImportRecordParser();
    m_importer->m_recordParser->SetInputData(m_packet.c_str());
    m_core.ForgetCalls();
}

void ImporterTest::GivenCurrentRecord(const Pairs& fields) {
    GivenPacket(Record(fields));
    ASSERT_EQ(m_importer->m_recordParser->NextRecord(), 1);
    m_core.ForgetCalls();
}

void ImporterTest::GivenRecordMap(const Pairs& fields) {
    GivenCurrentRecord(fields);
    for (const auto& [name, value] : fields) {
        m_importer->m_recordMap.SetAt(Obx_String::FromUtf8(name), Obx_String::FromUtf8(value));
    }
}

AdEntityPtr ImporterTest::GivenOpenBug() {
    AdEntityPtr bug = ImportEntity(m_importer->m_session, &m_bug, nullptr, nullptr);
    m_core.ForgetCalls();
    return bug;
}

void ImporterTest::Import(const std::string& packet) {
    const Obx_String units(Utf8ToUtf16Lossy(packet));
    m_error = m_importer->Import(units.Units());
}

void ImporterTest::ImportRecords(const std::vector<Pairs>& records) {
    std::vector<std::string> elements;
    std::transform(records.begin(), records.end(), std::back_inserter(elements), Record);
    Import(Packet(elements));
}

void ImporterTest::ExpectErrorText(const Obx_String& text) {
    EXPECT_EQ(text.ToUtf8(), m_error.ToUtf8());
}

void ImporterTest::ExpectBadValue(const Obx_String& condition) {
    const Obx_String expected =
        u"\n" +
        Message(message_id::kBadValue,
                {{u"_text_", condition}, {u"_file_", u"ztimporter/adimporter"}, {u"_line_", u"N"}});
    // Which line of which source it is changes with every edit.
    const std::regex place(" in ([a-z_]+\\.cpp) \\((.*), line [1-9][0-9]*\\)");
    std::smatch source;
    const std::string text = m_error.ToUtf8();
    ASSERT_TRUE(std::regex_search(text, source, place)) << text;
    EXPECT_TRUE(std::filesystem::exists(ZT_SOURCE_DIR "/ztimporter/adimporter/" + source[1].str()))
        << source[1];
    EXPECT_EQ(expected.ToUtf8(), std::regex_replace(text, place, " ($2, line N)"));
}

void ImporterTest::ExpectXmlError(const Obx_String& text) {
    ExpectErrorText(u"\nCaught a CException: XML, " + text);
}

Lines ImporterTest::Calls() {
    return m_core.Log().Lines({CallLog::Kind::kCall});
}

Lines ImporterTest::Trace() {
    return m_core.Log().Texts(CallLog::Kind::kTrace);
}

void ImporterTest::ExpectCalls(const Lines& lines) {
    EXPECT_EQ(OneText(lines), OneText(Calls()));
}

void ImporterTest::ExpectCallsAndQuestions(const Lines& lines) {
    EXPECT_EQ(OneText(lines),
              OneText(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion})));
}

void ImporterTest::ExpectTrace(const Lines& texts) {
    EXPECT_EQ(OneText(texts), OneText(Trace()));
}

void ImporterTest::ExpectStory(const Lines& lines) {
    EXPECT_EQ(OneText(lines),
              OneText(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kTrace})));
}

void ImporterTest::ExpectStoryEnds(const Lines& lines) {
    Lines story = m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kTrace});
    const auto surplus = std::max<std::ptrdiff_t>(0, std::ssize(story) - std::ssize(lines));
    story.erase(story.begin(), story.begin() + surplus);
    EXPECT_EQ(OneText(lines), OneText(story));
}

void ImporterTest::ExpectRecordMap(const Pairs& fields) {
    Lines expected;
    for (const auto& [name, value] : fields) {
        expected.push_back(name + " = " + value);
    }
    Lines held;
    auto position = m_importer->m_recordMap.GetStartPosition();
    while (position != nullptr) {
        Obx_String name;
        Obx_String value;
        m_importer->m_recordMap.GetNextAssoc(position, name, value);
        held.push_back((name + u" = " + value).ToUtf8());
    }
    EXPECT_EQ(OneText(expected), OneText(held));
}

void ImporterTest::ExpectCleanRecordMap() {
    ExpectRecordMap({});
    EXPECT_EQ(m_importer->m_recordState.ToUtf8(), "");
    EXPECT_EQ(m_importer->m_originalID_value.ToUtf8(), "");
    EXPECT_EQ(m_importer->m_duplicateID_value.ToUtf8(), "");
}

void ImporterTest::ExpectRecordMapLeft(const Obx_String& sourceId) {
    EXPECT_GT(m_importer->m_recordMap.GetCount(), 0);
    EXPECT_EQ(m_importer->m_originalID_value.ToUtf8(), sourceId.ToUtf8());
}

void ImporterTest::ExpectNoPendingHistory() {
    EXPECT_EQ(m_importer->m_historyBuffer, nullptr);
    EXPECT_EQ(m_importer->m_historyCount, 0);
}
