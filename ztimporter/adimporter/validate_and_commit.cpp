#include "ztimporter/adimporter/validate_and_commit.h"

#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter/message_text.h"

namespace adimporter {

Obx_String Refusal::WrappedText() const {
    return MessageText(messageId, {{u"_coreinfo_", coreText}});
}

std::optional<Refusal> ValidateAndCommit(AdEntity& entity) {
    PaMessage validation;
    entity.Validate(validation);
    if (validation.ID() != 0) {
        return Refusal{message_id::kValidationFailed, validation.FullMsg()};
    }
    PaMessage commit;
    entity.Commit(commit);
    if (commit.ID() != 0) {
        return Refusal{message_id::kCommitFailed, commit.FullMsg()};
    }
    return std::nullopt;
}

}  // namespace adimporter
