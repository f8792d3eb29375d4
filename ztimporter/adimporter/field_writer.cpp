#include "ztimporter/adimporter/field_writer.h"

#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/open_record.h"
#include "ztimporter/adimporter/owned_entries.h"
#include "ztimporter/importrecordparser.h"

namespace {

// Tells the core, with every value, that it comes from an import.
constexpr int kImport = 1;

void Trim(Obx_String& text) {
    text.TrimLeft();
    text.TrimRight();
}

// The word by which a source asks for an empty field, since empty values are left out.
void EmptyIfBlankWord(Obx_String& value) {
    if (value.CompareNoCase(u"BLANK") == 0) {
        value.Empty();
    }
}

}  // namespace

bool AdImporter::Steps::FieldWriter::Write(const Obx_String& fieldName, Obx_String& value) {
    switch (adimporter::Require(m_entity, u"entity != __null").GetFieldType(fieldName)) {
        case ad_field_type::kReference:
            return WriteReference(fieldName, value);
        case ad_field_type::kReferenceList:
            return WriteReferenceList(fieldName, value);
        case ad_field_type::kAttachments:
            return WriteAttachments(fieldName, value);
        case ad_field_type::kHistory:
            return WriteHistory(value);
        case ad_field_type::kDisplayId:
        case ad_field_type::kDbId:
            // The database itself gives records their identifiers.
            return true;
        default:
            return WritePlain(fieldName, value);
    }
}

// Plain values are not trimmed: the blanks around them belong to them.
bool AdImporter::Steps::FieldWriter::WritePlain(const Obx_String& fieldName, Obx_String& value) {
    if (value.IsEmpty()) {
        return true;
    }
    EmptyIfBlankWord(value);
    return Set(fieldName, value);
}

bool AdImporter::Steps::FieldWriter::WriteReference(const Obx_String& fieldName,
                                                    Obx_String& value) {
    Trim(value);
    if (value.IsEmpty()) {
        return true;
    }
    EmptyIfBlankWord(value);
    return m_references.Resolve(fieldName, value) && Set(fieldName, value);
}

bool AdImporter::Steps::FieldWriter::WriteReferenceList(const Obx_String& fieldName,
                                                        const Obx_String& value) {
    CStringArray items;
    m_importer.m_recordParser->SplitReferenceListValue(value, items);
    // The old list goes first, also when no new item survives.
    if (m_importer.m_replaceRefList != 0) {
        RemoveListItems(fieldName);
    }
    for (int i = 0; i < items.GetSize(); ++i) {
        Obx_String& item = items[i];
        Trim(item);
        if (item.IsEmpty()) {
            continue;
        }
        if (!m_references.Resolve(fieldName, item)) {
            return false;
        }
        m_error = m_entity->AddFieldValue(fieldName, item, kImport);
        if (!m_error.IsEmpty()) {
            return false;
        }
    }
    return true;
}

bool AdImporter::Steps::FieldWriter::WriteHistory(const Obx_String& value) {
    const auto lines = m_importer.m_recordParser->SplitHistoryData(value);
    AddHistory(m_importer, adimporter::DbIdOf(*m_entity), lines, m_error);
    return m_error.IsEmpty();
}

bool AdImporter::Steps::FieldWriter::WriteAttachments(const Obx_String& fieldName,
                                                      const Obx_String& value) {
    adimporter::OwnedEntries entries(m_importer.m_recordParser->ExtractAttachmentData(value));
    m_importer.AddAttachment(m_entity, fieldName, entries.GetList(), m_error);
    return m_error.IsEmpty();
}

bool AdImporter::Steps::FieldWriter::Set(const Obx_String& fieldName, const Obx_String& value) {
    m_error = m_entity->SetFieldValue(fieldName, value, kImport);
    return m_error.IsEmpty();
}

// A value that cannot be deleted does not stop the record: what counts is that the new ones are in.
void AdImporter::Steps::FieldWriter::RemoveListItems(const Obx_String& fieldName) {
    CStringArray current;
    adimporter::FieldOf(*m_entity, fieldName)->GetValue(current);
    for (const Obx_String& value : current) {
        m_entity->DeleteFieldValue(fieldName, value, kImport);
    }
}
