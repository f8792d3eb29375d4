#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/message_text.h"
#include "ztimporter/adimporter/original_record.h"
#include "ztimporter/adimporter/validate_and_commit.h"

using adimporter::EndWithError;
using adimporter::MessageText;
using adimporter::Require;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kMarkDuplicatesEndsWithError = u"MarkDuplicates ends with error: %s";
constexpr const char16_t* kEndsSuccessfully = u"MarkDuplicates ends successfully";

}  // namespace

int AdImporter::MarkDuplicates(AdEntityPtr entity, Obx_String& error) {
    try {
        TraceImporter(u"MarkDuplicates begins");
        if (m_duplicateID.IsEmpty() || m_duplicateID_value.IsEmpty() || m_originalID.IsEmpty()) {
            TraceImporter(kEndsSuccessfully);
            return 1;
        }
        Steps::OriginalRecord original(*this, m_duplicateID_value, error);
        switch (original.Found()) {
            case Steps::OriginalRecord::Matches::kOne:
                return Steps::MarkDuplicateOf(*this, original, entity, error);
            case Steps::OriginalRecord::Matches::kUnknown:
                original.Release();
                TraceImporter(kEndsSuccessfully);
                return 1;
            case Steps::OriginalRecord::Matches::kNone:
            case Steps::OriginalRecord::Matches::kMany:
                error = original.NotOneText();
                original.Unbuild();
                break;
        }
    } catch (...) {
        adimporter::AppendCaughtException(error);
    }
    return EndWithError(kMarkDuplicatesEndsWithError, error);
}

int AdImporter::Steps::MarkDuplicateOf(AdImporter& importer, OriginalRecord& original,
                                       const AdEntityPtr& entity, Obx_String& error) {
    const Obx_String parentId = original.Identifier();
    AdEntity& duplicate = Require(entity, u"entity != __null");
    try {
        const AdEntityPtr parent = GetEntity(importer.m_session, importer.m_entityDef, parentId);
        AdActionDef* const action = Require(duplicate.GetEntityDef(), u"entityDef != __null")
                                        .LookupActionDef(AdActionType_t::kDuplicate);
        MarkEntityAsDuplicate(importer.m_session, entity, parent, action, 1);
    } catch (PaMsgException* exception) {
        // Neither unbuilt nor reverted: the record stays as the action left it, uncommitted.
        const Obx_String coreText = AdExtractFirstMsgAndDeleteException(exception);
        error = MessageText(message_id::kMarkDuplicateFailed,
                            {{u"_parentid_", field_dbid},
                             {u"_parentidvalue_", parentId},
                             {u"_entityid_", importer.m_originalID},
                             {u"_entityidvalue_", importer.m_originalID_value}});
        original.Release();
        TraceImporter(u"MarkDuplicates ends with error: %s. \n Core error: %s", error, coreText);
        return 0;
    }
    const auto refusal = adimporter::ValidateAndCommit(duplicate);
    if (!refusal) {
        original.Unbuild();
        TraceImporter(kEndsSuccessfully);
        return 1;
    }
    error = refusal->WrappedText();
    // A record that does not commit is left as it is, unlike one that does not validate.
    if (refusal->messageId == message_id::kValidationFailed) {
        duplicate.Revert();
    }
    original.Unbuild();
    return EndWithError(kMarkDuplicatesEndsWithError, error);
}
