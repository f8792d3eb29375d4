#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/left_behind.h"
#include "ztimporter/adimporter/original_record.h"
#include "ztimporter/adimporter/validate_and_commit.h"

using adimporter::EndWithError;
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
        AdEntityPtr entity = Steps::OpenRecord(*this, nullptr);
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
        Steps::FollowCommit(*this, entity, error);
        CleanupRecordMap();
        if (!error.IsEmpty()) {
            return EndWithError(kImportFailed, error);
        }
        entity.SetPtr(nullptr);
        TraceImporter(u"ImportRecord ends");
        return 1;
    } catch (...) {
        return Steps::EndByException(*this, kImportFailed, error);
    }
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
        Steps::OriginalRecord original(*this, m_originalID_value, error);
        switch (original.Found()) {
            case Steps::OriginalRecord::Matches::kOne:
                return Steps::UpdateOriginal(*this, original, error);
            case Steps::OriginalRecord::Matches::kUnknown:
                // When the core cannot tell the count, nothing is done, and nothing is unbuilt.
                original.Release();
                CleanupRecordMap();
                TraceImporter(u"UpdateRecord ends successfully");
                return 1;
            case Steps::OriginalRecord::Matches::kNone:
                if (m_updateInsert != 0) {
                    original.Release();
                    return ImportRecord(error);
                }
                break;
            case Steps::OriginalRecord::Matches::kMany:
                break;
        }
        error = original.NotOneText();
        original.Unbuild();
        CleanupRecordMap();
    } catch (...) {
        return Steps::EndByException(*this, kUpdateFailed, error);
    }
    return EndWithError(kUpdateFailed, error);
}

int AdImporter::Steps::UpdateOriginal(AdImporter& importer, OriginalRecord& original,
                                      Obx_String& error) {
    const Obx_String identifier = original.Identifier();
    AdEntityPtr entity = OpenRecord(importer, identifier.Units());
    if (importer.SetupFieldValues(entity, error) == 0) {
        original.Unbuild();
        entity->Revert();
        importer.DiscardHistory();
        importer.CleanupRecordMap();
        return EndWithError(kUpdateFailed, error);
    }
    if (const auto refusal = ValidateAndCommit(*entity)) {
        // The core's text alone, where the creation of a record wraps it into a message.
        error = refusal->coreText;
        entity->Revert();
        importer.DiscardHistory();
        original.Unbuild();
        importer.CleanupRecordMap();
        return EndWithError(kUpdateFailed, error);
    }
    FollowCommit(importer, entity, error);
    original.Unbuild();
    importer.CleanupRecordMap();
    if (!error.IsEmpty()) {
        return EndWithError(kUpdateFailed, error);
    }
    entity.SetPtr(nullptr);
    TraceImporter(u"UpdateRecord ends successfully");
    return 1;
}

void AdImporter::Steps::FollowCommit(AdImporter& importer, const AdEntityPtr& entity,
                                     Obx_String& error) {
    importer.ReallyImportHistory(error);
    if (error.IsEmpty() && !importer.m_duplicateID.IsEmpty()) {
        importer.MarkDuplicates(entity, error);
    }
}

AdEntityPtr AdImporter::Steps::OpenRecord(const AdImporter& importer,
                                          const unsigned short* identifier) {
    AdEntityPtr entity = ImportEntity(importer.m_session, importer.m_entityDef,
                                      importer.m_recordState.Units(), identifier);
    Require(entity, u"entity != __null");
    return entity;
}

int AdImporter::Steps::EndByException(const AdImporter& importer, const char16_t* format,
                                      Obx_String& error) noexcept {
    adimporter::AppendCaughtException(error);
    // Nothing is cleaned up here, pending history included.
    adimporter::LeaveBehind(importer.m_historyBuffer);
    return EndWithError(format, error);
}
