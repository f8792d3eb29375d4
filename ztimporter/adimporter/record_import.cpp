#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/left_behind.h"
#include "ztimporter/adimporter/original_record.h"
#include "ztimporter/adimporter/saved_record.h"

using adimporter::AppendCaughtException;
using adimporter::EndWithError;
using adimporter::LeaveBehind;
using adimporter::Require;
using adimporter::TraceImporter;
using adimporter::ValidateAndCommit;

namespace {

constexpr const char16_t* kImportFailed = u"ImportRecord ends with error: %s";
constexpr const char16_t* kUpdateFailed = u"UpdateRecord ends with error: %s";

}  // namespace

int AdImporter::ImportRecord(Obx_String& error) {
    try {
        TraceImporter(u"ImportRecord begins");
        SetupRecordMap(error);
        if (!error.IsEmpty()) {
            CleanupRecordMap();
            return EndWithError(kImportFailed, error);
        }
        AdEntityPtr entity = ImportEntity(m_session, m_entityDef, m_recordState.Units(), nullptr);
        Require(entity, u"entity != __null", __LINE__);
        if (SetupFieldValues(entity, error) == 0) {
            DiscardHistory();
            entity->Revert();
            CleanupRecordMap();
            return EndWithError(kImportFailed, error);
        }
        if (const auto refusal = ValidateAndCommit(*entity)) {
            error = refusal->WrappedText();
            entity->Revert();
            DiscardHistory();
            CleanupRecordMap();
            return EndWithError(kImportFailed, error);
        }
        FollowCommit(entity, error);
        CleanupRecordMap();
        if (!error.IsEmpty()) {
            return EndWithError(kImportFailed, error);
        }
        entity.SetPtr(nullptr);
        TraceImporter(u"ImportRecord ends");
        return 1;
    } catch (...) {
        AppendCaughtException(error);
        // Nothing is cleaned up here, pending history included.
        LeaveBehind(m_historyBuffer);
    }
    return EndWithError(kImportFailed, error);
}

int AdImporter::UpdateRecord(Obx_String& error) {
    try {
        // Written before the record map is set up: it shows what the record before this one left.
        TraceImporter(u"UpdateRecord begins: m_originalID=%s, m_originalID_value=%s", m_originalID,
                      m_originalID_value);
        SetupRecordMap(error);
        if (!error.IsEmpty()) {
            CleanupRecordMap();
            return EndWithError(kUpdateFailed, error);
        }
        OriginalRecord original(*this, m_originalID_value, error);
        switch (original.Found()) {
            case OriginalRecord::Matches::kOne:
                return UpdateOriginal(original, error);
            case OriginalRecord::Matches::kUnknown:
                // A count that the core cannot give is nothing to do; nothing is unbuilt either.
                original.Release();
                CleanupRecordMap();
                TraceImporter(u"UpdateRecord ends successfully");
                return 1;
            case OriginalRecord::Matches::kNone:
                if (m_updateInsert != 0) {
                    original.Release();
                    return ImportRecord(error);
                }
                break;
            case OriginalRecord::Matches::kMany:
                break;
        }
        error = original.NotOneText();
        original.Unbuild();
        CleanupRecordMap();
    } catch (...) {
        AppendCaughtException(error);
        // Nothing is cleaned up here, pending history included.
        LeaveBehind(m_historyBuffer);
    }
    return EndWithError(kUpdateFailed, error);
}

int AdImporter::UpdateOriginal(OriginalRecord& original, Obx_String& error) {
    const Obx_String identifier = original.Identifier();
    AdEntityPtr entity =
        ImportEntity(m_session, m_entityDef, m_recordState.Units(), identifier.Units());
    Require(entity, u"entity != __null", __LINE__);
    if (SetupFieldValues(entity, error) == 0) {
        original.Unbuild();
        entity->Revert();
        DiscardHistory();
        CleanupRecordMap();
        return EndWithError(kUpdateFailed, error);
    }
    if (const auto refusal = ValidateAndCommit(*entity)) {
        // The core's text alone, where the creation of a record wraps it into a message.
        error = refusal->coreText;
        entity->Revert();
        DiscardHistory();
        original.Unbuild();
        CleanupRecordMap();
        return EndWithError(kUpdateFailed, error);
    }
    FollowCommit(entity, error);
    original.Unbuild();
    CleanupRecordMap();
    if (!error.IsEmpty()) {
        return EndWithError(kUpdateFailed, error);
    }
    entity.SetPtr(nullptr);
    TraceImporter(u"UpdateRecord ends successfully");
    return 1;
}

// What follows the commit of a record. A failure here leaves the record in the database and is only
// reported.
void AdImporter::FollowCommit(const AdEntityPtr& entity, Obx_String& error) {
    ReallyImportHistory(error);
    if (error.IsEmpty() && !m_duplicateID.IsEmpty()) {
        MarkDuplicates(entity, error);
    }
}
