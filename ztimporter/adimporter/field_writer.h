#ifndef ZTIMPORTER_ADIMPORTER_FIELD_WRITER_H
#define ZTIMPORTER_ADIMPORTER_FIELD_WRITER_H

#include "ztimporter/adimporter/reference_mapping.h"

// Writes fields of the current record into one open database record, each by its type.
class AdImporter::Steps::FieldWriter {
  public:
    // The importer, the record and the error text must outlive the writer.
    FieldWriter(AdImporter& importer, const AdEntityPtr& entity, Obx_String& error)
        : m_importer(importer),
          m_entity(entity),
          m_error(error),
          m_references(importer, entity, error) {}

    // Writes one field; `value` is used up. False when the field could not be written, with the
    // reason in the error text.
    bool Write(const Obx_String& fieldName, Obx_String& value);

  private:
    bool WritePlain(const Obx_String& fieldName, Obx_String& value);
    bool WriteReference(const Obx_String& fieldName, Obx_String& value);
    bool WriteReferenceList(const Obx_String& fieldName, const Obx_String& value);
    bool WriteHistory(const Obx_String& value);
    bool WriteAttachments(const Obx_String& fieldName, const Obx_String& value);

    bool Set(const Obx_String& fieldName, const Obx_String& value);
    void RemoveListItems(const Obx_String& fieldName);

    AdImporter& m_importer;
    const AdEntityPtr& m_entity;
    Obx_String& m_error;
    ReferenceMapping m_references;
};

#endif
