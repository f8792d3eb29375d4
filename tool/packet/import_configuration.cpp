#include "tool/packet/import_configuration.h"

#include <fmt/format.h>

#include "platform/core/adtext.h"
#include "platform/foundation/cexception.h"
#include "tool/io/source_error.h"
#include "tool/io/text_hash.h"
#include "tool/packet/exception_text.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/xml_text.h"
#include "ztimporter/adimporter.h"
#include "ztimporter/importconfigurationparser.h"

namespace tool {

namespace {

std::string Item(std::string_view element, const std::string& value) {
    return fmt::format("  <{} name=\"{}\"/>\n", element, EscapedAttribute(value));
}

std::string Item(std::string_view element, bool value) {
    return fmt::format("  <{} name=\"{}\"/>\n", element, value ? "TRUE" : "FALSE");
}

std::string MappingElement(const std::string& target, const std::string& reference) {
    return fmt::format("    <mapping target_field=\"{}\" reference_field=\"{}\"/>\n",
                       EscapedAttribute(target), EscapedAttribute(reference));
}

std::string LowerCase(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
    return text;
}

ImportedData DataOf(const Obx_String& type) {
    if (AdIsEqualNoCase(type, record_data_type) != 0) {
        return ImportedData::Records;
    }
    if (AdIsEqualNoCase(type, history_data_type) != 0) {
        return ImportedData::History;
    }
    return AdIsEqualNoCase(type, attachment_data_type) != 0 ? ImportedData::Attachments
                                                            : ImportedData::Nothing;
}

std::map<std::string, std::string> ReadMapping(AdImportConfigurationDataParser& parser) {
    CMapStringToString pairs(10);
    parser.GetRecordReferenceMapping(pairs);
    std::map<std::string, std::string> mapping;
    Obx_String target;
    Obx_String reference;
    for (auto position = pairs.GetStartPosition(); position != nullptr;) {
        pairs.GetNextAssoc(position, target, reference);
        mapping[target.ToUtf8()] = reference.ToUtf8();
    }
    return mapping;
}

}  // namespace

void ImportConfiguration::Apply(const std::string& packet, const std::string& name) {
    ImportConfiguration next;
    try {
        AdImportConfigurationDataParser parser;
        parser.SetInputData(packet.c_str());
        next.m_received = true;
        const Obx_String importData = parser.GetImportDataType();
        next.m_importData = importData.ToUtf8();
        next.m_data = DataOf(importData);
        next.m_recordType = parser.GetRecordType().ToUtf8();
        next.m_originalId = parser.GetOriginalID().ToUtf8();
        next.m_duplicateId = parser.GetDuplicateID().ToUtf8();
        next.m_importState = parser.GetImportState() != 0;
        next.m_updateRecord = parser.GetUpdateRecord() != 0;
        next.m_replaceRefList = parser.GetReplaceRefList() != 0;
        next.m_updateInsert = parser.GetUpdateInsert() != 0;
        next.m_mapping = ReadMapping(parser);
    } catch (CException* exception) {
        throw SourceError(name + ": " + TakeText(exception) +
                          "; mend the configuration and load it again");
    }
    next.m_mapping.merge(m_mapping);
    *this = std::move(next);
}

std::string ImportConfiguration::ItemElements() const {
    return Item("import_data", m_importData) + Item("original_id", m_originalId) +
           Item("duplicate_id", m_duplicateId) + Item("record_type", m_recordType) +
           Item("updateinsert", m_updateInsert) + Item("replacereflist", m_replaceRefList) +
           Item("updaterecord", m_updateRecord) + Item("importstate", m_importState);
}

std::string ImportConfiguration::ToPacket() const {
    std::string packet(kPacketDeclaration);
    packet += "\n<configuration>\n" + ItemElements();
    if (!m_mapping.empty()) {
        packet += "  <record_reference_mapping_list>\n";
        for (const auto& [target, reference] : m_mapping) {
            packet += MappingElement(target, reference);
        }
        packet += "  </record_reference_mapping_list>\n";
    }
    return packet + "</configuration>\n";
}

std::string ImportConfiguration::Fingerprint(
    const std::function<bool(std::string_view)>& isField) const {
    ImportConfiguration canonical = *this;
    for (std::string* name : {&canonical.m_importData, &canonical.m_recordType,
                              &canonical.m_originalId, &canonical.m_duplicateId}) {
        *name = LowerCase(*name);
    }
    std::erase_if(canonical.m_mapping, [&](const auto& entry) { return !isField(entry.first); });
    return HashText(canonical.ToPacket());
}

}  // namespace tool
