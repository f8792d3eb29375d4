#ifndef ZTIMPORTER_ADIMPORTER_VALIDATE_AND_COMMIT_H
#define ZTIMPORTER_ADIMPORTER_VALIDATE_AND_COMMIT_H

#include <optional>

#include "platform/core/adentity.h"

namespace adimporter {

// Why the core did not save a record.
struct Refusal {
    // The catalogue message of the step that failed: kValidationFailed or kCommitFailed.
    int messageId;
    Obx_String coreText;

    // The catalogue message around the core's text.
    Obx_String WrappedText() const;
};

// Validates and then commits the record; nothing when both went through. What to do with a record
// that was refused is the caller's: the operations differ in what they undo, in which order, and in
// how they report.
std::optional<Refusal> ValidateAndCommit(AdEntity& entity);

}  // namespace adimporter

#endif
