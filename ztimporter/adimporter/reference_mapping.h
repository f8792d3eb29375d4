#ifndef ZTIMPORTER_ADIMPORTER_REFERENCE_MAPPING_H
#define ZTIMPORTER_ADIMPORTER_REFERENCE_MAPPING_H

#include "ztimporter/adimporter/steps.h"

// Turns the references of one record, as the source writes them, into the unique keys that the core
// takes, where the configuration maps the field.
class AdImporter::Steps::ReferenceMapping {
  public:
    // The importer, the record and the error text must outlive the object.
    ReferenceMapping(AdImporter& importer, const AdEntityPtr& entity, Obx_String& error)
        : m_importer(importer), m_entity(entity), m_error(error) {}

    // Replaces `value`; that of a field which is not mapped stays as it is. False when there is not
    // exactly one record that it can mean, with the reason in the error text.
    bool Resolve(const Obx_String& fieldName, Obx_String& value);

  private:
    bool ResolveKeyParts(const AdEntityDef& type, const Obx_String& fieldName, Obx_String& value,
                         const Obx_String& referencedField);
    bool LookUp(const Obx_String& fieldName, Obx_String& value, const Obx_String& referencedField,
                const Obx_String& uniqueKey);

    AdImporter& m_importer;
    const AdEntityPtr& m_entity;
    Obx_String& m_error;
};

#endif
