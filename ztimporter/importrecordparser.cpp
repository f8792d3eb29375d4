#include "ztimporter/importrecordparser.h"

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/core/adtext.h"
#include "ztimporter/packetstream.h"
#include "ztimporter/trace.h"

namespace {

constexpr const char16_t* kTag = u"AdImportRecordParser";

const Obx_String record_label = u"record";
const Obx_String name_label = u"name";
const std::array<Obx_String, 4> attachment_label = {u"dbid", u"filename", u"filesize",
                                                    u"description"};
const std::array<Obx_String, 7> history_label = {u"dbid",        u"action_timestamp", u"user_name",
                                                 u"action_name", u"old_state",        u"new_state",
                                                 u"comments"};

// One less than there are keys: a line that has a comment is dropped whole, and no entry ever gets
// "comments". Callers know the format like this; it is not to be mended.
constexpr int kMostHistoryColumns = 6;

const Obx_String kColumnSeparator = u"\t";

// The ampersand comes first, so that what was escaped twice ("&amp;lt;") is decoded twice.
const std::array<std::pair<Obx_String, Obx_String>, 8> escape_table = {{{u"&amp;", u"&"},
                                                                        {u"&lt;", u"<"},
                                                                        {u"&gt;", u">"},
                                                                        {u"&apos;", u"'"},
                                                                        {u"&quot;", u"\""},
                                                                        {u"&#x9;", u"\t"},
                                                                        {u"&#xA;", u"\n"},
                                                                        {u"&#xD;", u"\r"}}};

// A record is found by these bytes alone; a tag with attributes or blanks is not one.
constexpr std::string_view kRecordTag = "<record>";

// Owns the maps of a list until the list is complete.
class EntryListBuilder {
  public:
    EntryListBuilder() = default;
    ~EntryListBuilder() {
        for (CMapStringToString* entry : m_entries) {
            delete entry;
        }
    }
    EntryListBuilder(const EntryListBuilder&) = delete;
    EntryListBuilder& operator=(const EntryListBuilder&) = delete;

    static std::unique_ptr<CMapStringToString> NewEntry() {
        constexpr int kBlockSize = 10;
        return std::make_unique<CMapStringToString>(kBlockSize);
    }

    void Add(std::unique_ptr<CMapStringToString> entry) {
        m_entries.push_back(entry.get());
        static_cast<void>(entry.release());
    }

    std::size_t Size() const { return m_entries.size(); }

    // The maps become the caller's.
    std::list<CMapStringToString*> Release() { return std::exchange(m_entries, {}); }

  private:
    std::list<CMapStringToString*> m_entries;
};

// Reads the fields up to the first token that opens none.
void ReadFields(AdImportRecordParser& parser, IXmlStream& xml, CMapStringToString& map) {
    Obx_String tagName;
    XmlSTag tag;
    XmlCharData data;
    while (xml.GetNextTokenType() == IXmlStream::kStartTag) {
        if (xml.GetNextTokenName(tagName) == 0) {
            continue;
        }
        Obx_String value;
        xml >> tag;
        if (xml.GetNextTokenType() == IXmlStream::kCharData) {
            xml >> data;
            value = parser.UnEscape(data.GetImage(nullptr));
        }
        SkipEndTag(xml);
        map.SetAt(tag.GetAttributeByName(name_label), value);
    }
}

}  // namespace

AdImportRecordParser::AdImportRecordParser() {
    Trace(kTag, u"Constructor");
}

AdImportRecordParser::~AdImportRecordParser() {
    m_strXML = nullptr;
    TraceDestructor(kTag);
}

void AdImportRecordParser::SetInputData(const char* text) {
    if (text == nullptr) {
        Trace(kTag, u"SetInputData, m_strXML is NULL.");
        return;
    }
    const std::string_view whole(text);
    m_strXML = text;
    m_end = text + whole.size();
    Trace(kTag, u"SetInputData, m_strXML length = %d", whole.size());
    m_strXML = SkipDeclaration(whole).data();
}

int AdImportRecordParser::NextRecord() {
    if (m_strXML == nullptr) {
        Trace(kTag, u"NextRecord, m_strXML is NULL");
        return 0;
    }
    // Any character of the tag, and not the tag itself: a text that was handed over while the
    // parser stood on a record of the former text loses its first byte in the same way.
    if (m_bRecordFound != 0 && m_strXML != m_end &&
        kRecordTag.find(*m_strXML) != std::string_view::npos) {
        ++m_strXML;
    }
    const std::string_view rest(m_strXML, m_end);
    const std::size_t found = rest.find(kRecordTag);
    m_bRecordFound = found == std::string_view::npos ? 0 : 1;
    if (m_bRecordFound != 0) {
        m_strXML += found;
    }
    Trace(kTag, u"NextRecord, m_strXML length = %d", m_end - m_strXML);
    return m_bRecordFound;
}

int AdImportRecordParser::GetRecordMap(CMapStringToString& map) {
    if (m_strXML == nullptr) {
        Trace(kTag, u"GetRecordMap, m_strXML is NULL");
        return 0;
    }
    PacketStream packet(std::string_view(m_strXML, m_end));
    IXmlStream& xml = packet.Xml();
    Obx_String name;
    XmlSTag tag;
    while (xml.GetNextTokenType() == IXmlStream::kStartTag) {
        if (xml.GetNextTokenName(name) == 0) {
            continue;
        }
        xml >> tag;
        if (AdIsUnequal(name, record_label) == 0) {
            ReadFields(*this, xml, map);
        } else {
            SkipElementHead(xml);
        }
    }
    Trace(kTag, u"GetRecordMap, fields number = %d", map.GetCount());
    return map.GetCount();
}

Obx_String AdImportRecordParser::UnEscape(const Obx_String& text) {
    Obx_String result = text;
    if (text.View().find(u'&') == std::u16string_view::npos) {
        return result;
    }
    for (const auto& [escape, character] : escape_table) {
        AdReplaceString(result, escape, character);
    }
    return result;
}

int AdImportRecordParser::SplitReferenceListValue(const Obx_String& value, CStringArray& items) {
    items.RemoveAll();
    Obx_String item;
    for (const char16_t unit : value.View()) {
        if (unit == u',') {
            items.Add(item);
            item.Empty();
        } else {
            item += unit;
        }
    }
    if (AdIsEmpty(item) == 0) {
        items.Add(item);
    }
    Trace(kTag, u"SplitReferenceListValue, result size = %d", items.GetSize());
    return items.GetSize();
}

std::list<CMapStringToString*> AdImportRecordParser::ExtractHistoryData(const Obx_String& value) {
    EntryListBuilder entries;
    CStringArray lines;
    AdSplitTextIntoLines(value, lines);
    CStringArray columns;
    for (const Obx_String& line : lines) {
        AdSplitString(line, kColumnSeparator, columns);
        if (columns.GetSize() > kMostHistoryColumns) {
            continue;
        }
        auto entry = EntryListBuilder::NewEntry();
        for (int k = 0; k < columns.GetSize(); ++k) {
            entry->SetAt(history_label[static_cast<std::size_t>(k)], columns[k]);
        }
        entries.Add(std::move(entry));
    }
    Trace(kTag, u"ExtractHistoryData, result size = %d", entries.Size());
    return entries.Release();
}

std::list<CMapStringToString*> AdImportRecordParser::ExtractAttachmentData(
    const Obx_String& value) {
    EntryListBuilder entries;
    CStringArray lines;
    AdSplitTextIntoLines(value, lines);
    std::unique_ptr<CMapStringToString> entry;
    std::size_t line = 0;
    for (const Obx_String& text : lines) {
        const std::size_t key = line++ % attachment_label.size();
        if (key == 0) {
            entry = EntryListBuilder::NewEntry();
        }
        entry->SetAt(attachment_label[key], text);
        if (key == attachment_label.size() - 1) {
            entries.Add(std::move(entry));
        }
    }
    Trace(kTag, u"ExtractAttachmentData, result size = %d", entries.Size());
    return entries.Release();
}
