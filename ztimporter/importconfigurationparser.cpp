#include "ztimporter/importconfigurationparser.h"

#include "platform/core/adtext.h"
#include "ztimporter/packetstream.h"
#include "ztimporter/plainrecord.h"
#include "ztimporter/trace.h"

namespace {

constexpr const char16_t* kConfigurationParserTag = u"AdImportConfigurationDataParser";

const Obx_String config_label = u"configuration";
const Obx_String import_data_type_label = u"import_data";
const Obx_String original_id_label = u"original_id";
const Obx_String duplicate_id_label = u"duplicate_id";
const Obx_String record_type_label = u"record_type";
const Obx_String update_insert_label = u"updateinsert";
const Obx_String replace_reflist_label = u"replacereflist";
const Obx_String update_record_label = u"updaterecord";
const Obx_String import_state_label = u"importstate";
const Obx_String record_reference_mapping_list_label = u"record_reference_mapping_list";
const Obx_String history_reference_mapping_list_label = u"history_reference_mapping_list";
const Obx_String attachment_reference_mapping_list_label = u"attachment_reference_mapping_list";
const Obx_String reference_field_label = u"reference_field";
const Obx_String target_field_label = u"target_field";

const Obx_String kTrue = u"TRUE";

int IsTrue(const Obx_String& value) {
    return AdIsEqualNoCase(value, kTrue);
}

// Takes start tags, and the heads of the elements that they open, until the tag of that name has
// been taken; false when something else than a start tag comes before it.
bool FindElement(IXmlStream& xml, const Obx_String& name, XmlSTag& tag) {
    Obx_String found;
    while (TakeStartTag(xml, found, tag)) {
        if (AdIsEqual(found, name) != 0) {
            return true;
        }
        SkipElementHead(xml);
    }
    return false;
}

void ReadMappings(IXmlStream& xml, CMapStringToString& map) {
    Obx_String name;
    XmlSTag tag;
    while (TakeStartTag(xml, name, tag)) {
        const Obx_String target = tag.GetAttributeByName(target_field_label);
        if (AdIsEmpty(target) == 0) {
            const Obx_String reference = tag.GetAttributeByName(reference_field_label);
            if (AdIsEmpty(reference) == 0) {
                map.SetAt(target, reference);
            }
        }
        SkipCharData(xml);
        SkipEndTag(xml);
    }
}

}  // namespace

AdImportConfigurationDataParser::AdImportConfigurationDataParser() {
    Trace(kConfigurationParserTag, u"Constructor");
}

AdImportConfigurationDataParser::~AdImportConfigurationDataParser() {
    m_strXML = PacketText();
    TraceDestructor(kConfigurationParserTag);
}

void AdImportConfigurationDataParser::SetInputData(const char* text) {
    m_strXML.SetInputData(kConfigurationParserTag, text);
}

int AdImportConfigurationDataParser::IsConfigurationData() {
    Trace(kConfigurationParserTag, u"IsConfigurationData");
    if (!m_strXML) {
        return 0;
    }
    if (const auto answer = IsPlainConfiguration(m_strXML.Rest(), "configuration")) {
        return *answer ? 1 : 0;
    }
    PacketStream packet(m_strXML.Rest());
    Obx_String name;
    XmlSTag tag;
    while (TakeStartTag(packet.Xml(), name, tag)) {
        if (AdIsEqual(name, config_label) != 0) {
            return 1;
        }
    }
    return 0;
}

Obx_String AdImportConfigurationDataParser::GetConfigString(const Obx_String& item) {
    Trace(kConfigurationParserTag, u"GetConfigString, item = %s", item);
    Obx_String value;
    if (m_strXML) {
        PacketStream packet(m_strXML.Rest());
        XmlSTag tag;
        if (FindElement(packet.Xml(), item, tag)) {
            value = tag.GetAttributeByName(name_label);
        }
    }
    Trace(kConfigurationParserTag, u"GetConfigString, value = %s", value);
    return value;
}

Obx_String AdImportConfigurationDataParser::GetImportDataType() {
    return GetConfigString(import_data_type_label);
}

Obx_String AdImportConfigurationDataParser::GetOriginalID() {
    return GetConfigString(original_id_label);
}

Obx_String AdImportConfigurationDataParser::GetDuplicateID() {
    return GetConfigString(duplicate_id_label);
}

Obx_String AdImportConfigurationDataParser::GetRecordType() {
    return GetConfigString(record_type_label);
}

int AdImportConfigurationDataParser::GetUpdateInsert() {
    return IsTrue(GetConfigString(update_insert_label));
}

int AdImportConfigurationDataParser::GetReplaceRefList() {
    return IsTrue(GetConfigString(replace_reflist_label));
}

int AdImportConfigurationDataParser::GetUpdateRecord() {
    return IsTrue(GetConfigString(update_record_label));
}

int AdImportConfigurationDataParser::GetImportState() {
    return IsTrue(GetConfigString(import_state_label));
}

int AdImportConfigurationDataParser::GetReferenceMapping(const Obx_String& listName,
                                                         CMapStringToString& map) {
    Trace(kConfigurationParserTag, u"GetReferenceMapping, type = %s", listName);
    if (!m_strXML) {
        return 0;
    }
    PacketStream packet(m_strXML.Rest());
    XmlSTag list;
    if (FindElement(packet.Xml(), listName, list)) {
        ReadMappings(packet.Xml(), map);
    }
    return map.GetCount();
}

int AdImportConfigurationDataParser::GetRecordReferenceMapping(CMapStringToString& map) {
    return GetReferenceMapping(record_reference_mapping_list_label, map);
}

int AdImportConfigurationDataParser::GetHistoryReferenceMapping(CMapStringToString& map) {
    return GetReferenceMapping(history_reference_mapping_list_label, map);
}

int AdImportConfigurationDataParser::GetAttachmentReferenceMapping(CMapStringToString& map) {
    return GetReferenceMapping(attachment_reference_mapping_list_label, map);
}
