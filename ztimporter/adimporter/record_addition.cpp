#include "ztimporter/adimporter/record_addition.h"

#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/validate_and_commit.h"

bool AdImporter::Steps::RecordAddition::Import() {
    m_importer.SetupRecordMap(m_error);
    if (!m_error.IsEmpty()) {
        m_importer.CleanupRecordMap();
        return Fail();
    }
    // The two silent skips, here and at an unknown count, leave the record map as it is: its values
    // reach the next record, and callers count on that.
    if (!Collect()) {
        return true;
    }
    // Adding to a record never moves it to another state.
    if (m_importer.m_entityDef->GetType() == ad_entity_kind::kWithStates) {
        m_importer.m_recordState.Empty();
    }
    OriginalRecord original(m_importer, m_importer.m_originalID_value, m_error);
    switch (original.Found()) {
        case OriginalRecord::Matches::kOne:
            return AddToOriginal(original);
        case OriginalRecord::Matches::kUnknown:
            return true;
        case OriginalRecord::Matches::kNone:
        case OriginalRecord::Matches::kMany:
            break;
    }
    m_error = original.NotOneText();
    original.Unbuild();
    m_importer.CleanupRecordMap();
    return Fail();
}

bool AdImporter::Steps::RecordAddition::AddToOriginal(OriginalRecord& original) {
    const Obx_String identifier = original.Identifier();
    const AdEntityPtr entity = OpenRecord(m_importer, identifier.Units());
    AddTo(entity);
    if (!m_error.IsEmpty()) {
        original.Unbuild();
        entity->Revert();
        m_importer.CleanupRecordMap();
        return Fail();
    }
    BeforeValidation();
    if (const auto refusal = adimporter::ValidateAndCommit(*entity)) {
        m_error = refusal->WrappedText();
        entity->Revert();
        m_importer.CleanupRecordMap();
        original.Unbuild();
        // History packets are traced with the attachment operation's text here as well.
        adimporter::TraceImporter(u"ImportAttachment ends with error: %s", m_error);
        return false;
    }
    original.Unbuild();
    m_importer.CleanupRecordMap();
    return true;
}

bool AdImporter::Steps::RecordAddition::Fail() const {
    adimporter::TraceImporter(m_endsWithError, m_error);
    return false;
}
