#include <list>
#include <string>
#include <string_view>

#include "input.h"
#include "platform/foundation/cexception.h"
#include "platform/foundation/cmapstringtostring.h"
#include "platform/foundation/cstringarray.h"
#include "ztimporter/importrecordparser.h"

namespace {

using fuzz::Expect;

int CountRecordTags(std::string_view text) {
    int count = 0;
    for (auto at = text.find("<record>"); at != text.npos; at = text.find("<record>", at + 1)) {
        ++count;
    }
    return count;
}

void Free(const std::list<CMapStringToString*>& entries) {
    for (const CMapStringToString* entry : entries) {
        delete entry;
    }
}

// Reads a value in every way in which the importer may, whatever its field's type.
void ReadValue(AdImportRecordParser& parser, const Obx_String& value) {
    if (value.Find(u"&") < 0) {
        Expect(parser.UnEscape(value) == value, "a text without escapes stays as it is");
    }
    CStringArray items;
    Expect(parser.SplitReferenceListValue(value, items) == items.GetSize(),
           "the number of items is returned");
    const auto history = parser.ExtractHistoryData(value);
    for (const CMapStringToString* entry : history) {
        Expect(entry->GetCount() <= 6, "a history entry has six columns at the most");
    }
    Free(history);
    const auto attachments = parser.ExtractAttachmentData(value);
    for (const CMapStringToString* entry : attachments) {
        Expect(entry->GetCount() == 4, "an attachment has four lines");
    }
    Free(attachments);
}

void ReadRecord(AdImportRecordParser& parser) {
    CMapStringToString fields;
    try {
        Expect(parser.GetRecordMap(fields) == fields.GetCount(),
               "the number of fields is returned");
    } catch (CException* exception) {
        exception->Delete();
        return;
    }
    Obx_String name;
    Obx_String value;
    for (auto position = fields.GetStartPosition(); position != nullptr;) {
        fields.GetNextAssoc(position, name, value);
        ReadValue(parser, value);
    }
}

}  // namespace

// The parser stops at every "<record>" once, and the caller owns what it returns.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string packet(fuzz::Input(data, size).Text());
    const std::string text(packet.c_str());
    AdImportRecordParser parser;
    parser.SetInputData(text.c_str());
    ReadValue(parser, Obx_String::FromUtf8(text));
    int records = 0;
    while (parser.NextRecord() != 0) {
        ++records;
        ReadRecord(parser);
    }
    Expect(records <= CountRecordTags(text), "there is a tag for every record");
    return 0;
}
