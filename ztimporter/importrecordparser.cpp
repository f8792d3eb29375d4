#include "ztimporter/importrecordparser.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/core/adtext.h"
#include "platform/foundation/markup_escapes.h"
#include "ztimporter/entrylabels.h"
#include "ztimporter/packetstream.h"
#include "ztimporter/plainrecord.h"
#include "ztimporter/trace.h"

namespace {

constexpr const char16_t* kRecordParserTag = u"AdImportRecordParser";

const Obx_String record_label = u"record";

// A record is found by these bytes alone; a tag with attributes or blanks is not one.
constexpr std::string_view kRecordTag = "<record>";

bool BeginsWith(std::u16string_view text, std::string_view ascii) {
    return text.size() >= ascii.size() && std::equal(ascii.begin(), ascii.end(), text.begin());
}

// Replaces the escapes of the table from left to right; what was put in is not looked at again.
Obx_String ReplaceEscapes(Obx_String text, std::span<const MarkupEscape> table) {
    int ampersand = text.Find(u"&");
    if (ampersand < 0) {
        return text;
    }
    const std::u16string_view whole = text.View();
    std::u16string out;
    out.reserve(whole.size());
    std::size_t begin = 0;
    for (; ampersand >= 0; ampersand = text.Find(u"&", static_cast<int>(begin))) {
        const std::u16string_view rest = whole.substr(static_cast<std::size_t>(ampersand));
        const auto escape = std::find_if(
            table.begin(), table.end(),
            [=](const MarkupEscape& candidate) { return BeginsWith(rest, candidate.sequence); });
        const bool known = escape != table.end();
        out.append(whole, begin, static_cast<std::size_t>(ampersand) - begin);
        out += known ? static_cast<char16_t>(escape->character) : u'&';
        begin = static_cast<std::size_t>(ampersand) + (known ? escape->sequence.size() : 1);
    }
    out.append(whole, begin);
    return Obx_String(std::move(out));
}

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
    while (TakeStartTag(xml, tagName, tag)) {
        Obx_String value;
        if (xml.GetNextTokenType() == IXmlStream::kCharData) {
            XmlCharData data;
            xml >> data;
            value = parser.UnEscape(std::move(data).GetImage(nullptr));
        }
        SkipEndTag(xml);
        map.SetAt(tag.GetAttributeByName(name_label), value);
    }
}

// Reads the record at the beginning of the text token by token.
void ReadTokens(AdImportRecordParser& parser, std::string_view text, CMapStringToString& map) {
    PacketStream packet(text);
    IXmlStream& xml = packet.Xml();
    Obx_String name;
    XmlSTag tag;
    while (TakeStartTag(xml, name, tag)) {
        if (AdIsUnequal(name, record_label) == 0) {
            ReadFields(parser, xml, map);
        } else {
            SkipElementHead(xml);
        }
    }
}

void SetFields(AdImportRecordParser& parser, const std::vector<PlainField>& fields,
               CMapStringToString& map) {
    for (const PlainField& field : fields) {
        Obx_String value = Obx_String::FromUtf8(field.text);
        if (field.text.find('&') != std::string_view::npos) {
            value = parser.UnEscape(value);
        }
        map.SetAt(Obx_String::FromUtf8(field.name), std::move(value));
    }
}

void TraceHistory(std::size_t entries) {
    Trace(kRecordParserTag, u"ExtractHistoryData, result size = %d", entries);
}

}  // namespace

AdImportRecordParser::AdImportRecordParser() {
    Trace(kRecordParserTag, u"Constructor");
}

AdImportRecordParser::~AdImportRecordParser() {
    m_strXML = PacketText();
    TraceDestructor(kRecordParserTag);
}

void AdImportRecordParser::SetInputData(const char* text) {
    m_strXML.SetInputData(kRecordParserTag, text);
}

int AdImportRecordParser::NextRecord() {
    if (!m_strXML) {
        Trace(kRecordParserTag, u"NextRecord, m_strXML is NULL");
        return 0;
    }
    // Any character of the tag, and not the tag itself: a text that was handed over while the
    // parser stood on a record of the former text loses its first byte in the same way.
    if (m_bRecordFound != 0 && !m_strXML.Rest().empty() &&
        kRecordTag.find(m_strXML.Rest().front()) != std::string_view::npos) {
        m_strXML.Advance(1);
    }
    const std::size_t found = m_strXML.Rest().find(kRecordTag);
    m_bRecordFound = found == std::string_view::npos ? 0 : 1;
    if (m_bRecordFound != 0) {
        m_strXML.Advance(found);
    }
    Trace(kRecordParserTag, u"NextRecord, m_strXML length = %d", m_strXML.Rest().size());
    return m_bRecordFound;
}

int AdImportRecordParser::GetRecordMap(CMapStringToString& map) {
    if (!m_strXML) {
        Trace(kRecordParserTag, u"GetRecordMap, m_strXML is NULL");
        return 0;
    }
    std::vector<PlainField> fields;
    if (ReadPlainRecord(m_strXML.Rest(), fields)) {
        SetFields(*this, fields, map);
    } else {
        ReadTokens(*this, m_strXML.Rest(), map);
    }
    Trace(kRecordParserTag, u"GetRecordMap, fields number = %d", map.GetCount());
    return map.GetCount();
}

// The escapes are replaced one after the other, the ampersand's first, so that what was escaped
// twice ("&amp;lt;") is decoded twice. None of the other seven can arise from one of them being
// replaced, which lets these share one pass.
Obx_String AdImportRecordParser::UnEscape(const Obx_String& text) {
    const std::span<const MarkupEscape> table(kMarkupEscapes);
    return ReplaceEscapes(ReplaceEscapes(text, table.first(1)), table.subspan(1));
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
    Trace(kRecordParserTag, u"SplitReferenceListValue, result size = %d", items.GetSize());
    return items.GetSize();
}

std::list<CMapStringToString*> AdImportRecordParser::ExtractHistoryData(const Obx_String& value) {
    EntryListBuilder entries;
    for (const HistoryColumns& line : SplitHistory(value.View())) {
        auto entry = EntryListBuilder::NewEntry();
        for (std::size_t k = 0; k < line.count; ++k) {
            entry->SetAt(history_label[k], Obx_String(line.texts[k]));
        }
        entries.Add(std::move(entry));
    }
    TraceHistory(entries.Size());
    return entries.Release();
}

std::vector<HistoryColumns> AdImportRecordParser::SplitHistoryData(const Obx_String& value) {
    std::vector<HistoryColumns> lines = SplitHistory(value.View());
    TraceHistory(lines.size());
    return lines;
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
            entries.Add(std::exchange(entry, nullptr));
        }
    }
    Trace(kRecordParserTag, u"ExtractAttachmentData, result size = %d", entries.Size());
    return entries.Release();
}
