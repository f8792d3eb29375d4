#include <string>

#include "input.h"
#include "platform/foundation/cexception.h"
#include "platform/foundation/cmapstringtostring.h"
#include "ztimporter/importconfigurationparser.h"

namespace {

using fuzz::Expect;

// Asks for everything, in the importer's order.
std::string Answers(AdImportConfigurationDataParser& parser) {
    std::string answers = std::to_string(parser.IsConfigurationData());
    for (const Obx_String& text : {parser.GetRecordType(), parser.GetOriginalID(),
                                   parser.GetDuplicateID(), parser.GetImportDataType()}) {
        answers += '\n' + text.ToUtf8();
    }
    for (const int flag : {parser.GetImportState(), parser.GetUpdateRecord(),
                           parser.GetReplaceRefList(), parser.GetUpdateInsert()}) {
        Expect(flag == 0 || flag == 1, "a flag is 0 or 1");
        answers += '\n' + std::to_string(flag);
    }
    CMapStringToString mapping;
    Expect(parser.GetRecordReferenceMapping(mapping) == mapping.GetCount(),
           "the number of mappings is returned");
    Obx_String target;
    Obx_String reference;
    for (auto position = mapping.GetStartPosition(); position != nullptr;) {
        mapping.GetNextAssoc(position, target, reference);
        Expect(!target.IsEmpty() && !reference.IsEmpty(), "a mapping has both its names");
        answers += '\n' + target.ToUtf8() + '=' + reference.ToUtf8();
    }
    parser.GetHistoryReferenceMapping(mapping);
    parser.GetAttachmentReferenceMapping(mapping);
    return answers;
}

// The answers, or the failure's message.
std::string Ask(AdImportConfigurationDataParser& parser) {
    try {
        return Answers(parser);
    } catch (CException* exception) {
        char16_t message[512];
        exception->GetErrorMessage(message, 512);
        exception->Delete();
        return Obx_String(message).ToUtf8();
    }
}

}  // namespace

// Each question reads the packet from its beginning, so nothing that was asked changes an answer.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string packet(fuzz::Input(data, size).Text());
    AdImportConfigurationDataParser parser;
    parser.SetInputData(packet.c_str());
    const std::string answers = Ask(parser);
    Expect(Ask(parser) == answers, "asking again gives the same answers");
    return 0;
}
