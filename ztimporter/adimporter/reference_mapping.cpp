#include "ztimporter/adimporter/reference_mapping.h"

#include "platform/core/adtext.h"
#include "ztimporter/adimporter/open_record.h"

bool AdImporter::Steps::ReferenceMapping::Resolve(const Obx_String& fieldName, Obx_String& value) {
    Obx_String referencedField;
    m_importer.m_recordReferenceMapping.Lookup(fieldName, referencedField);
    if (referencedField.IsEmpty()) {
        return true;
    }
    const AdEntityDef& type = adimporter::ReferencedType(*m_entity, fieldName);
    if (type.GetType() == ad_entity_kind::kWithStates) {
        return LookUp(fieldName, value, referencedField, u"ID");
    }
    if (type.NumUniqueKeyFieldDefs() > 1) {
        return ResolveKeyParts(type, fieldName, value, referencedField);
    }
    CStringArray labels;
    type.GetUniqueKeyFieldDefLabels(labels);
    // Without a key there is nothing to replace the value by, as if the field were not mapped.
    return labels.GetSize() == 0 || LookUp(fieldName, value, referencedField, labels[0]);
}

// The value of a key of several fields is its parts, separated by single blanks. Only a part that
// is a database identifier differs between the source and this database, and it stands first.
bool AdImporter::Steps::ReferenceMapping::ResolveKeyParts(const AdEntityDef& type,
                                                          const Obx_String& fieldName,
                                                          Obx_String& value,
                                                          const Obx_String& referencedField) {
    const Obx_String separator(u" ");
    CStringArray labels;
    type.GetUniqueKeyFieldDefLabels(labels);
    for (const Obx_String& label : labels) {
        if (label.CompareNoCase(field_dbid) != 0) {
            continue;
        }
        CStringArray parts;
        AdSplitString(value, separator, parts);
        // The empty value has no parts; it is valid and looks nothing up.
        value = parts.GetSize() > 0 ? parts[0] : Obx_String();
        if (!LookUp(fieldName, value, referencedField, u"DBID")) {
            return false;
        }
        for (int i = 1; i < parts.GetSize(); ++i) {
            value += separator;
            value += parts[i];
        }
    }
    return true;
}

bool AdImporter::Steps::ReferenceMapping::LookUp(const Obx_String& fieldName, Obx_String& value,
                                                 const Obx_String& referencedField,
                                                 const Obx_String& uniqueKey) {
    return m_importer.IsReferenceIDValid(m_entity, fieldName, value, referencedField, uniqueKey,
                                         m_error) != 0;
}
