#ifndef TOOL_VERIFY_COMPARISON_ATTACHMENT_COMPARISON_H
#define TOOL_VERIFY_COMPARISON_ATTACHMENT_COMPARISON_H

#include <vector>

#include "recorddb/reader.h"
#include "tool/verify/comparison/attachment_files.h"
#include "tool/verify/comparison/difference_reporter.h"
#include "tool/verify/comparison/expected_record.h"
#include "tool/verify/comparison/stored_contents.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// Compares a record's attachments, field by field, in their order: names, sizes, descriptions and
// contents, the source's contents being the files. What the database has beside them is a
// difference where the sources create the record. `contents` and `files` give the contents.
void CompareAttachments(const ExpectedRecord& expected,
                        const std::vector<recorddb::Attachment>& stored, StoredContents& contents,
                        const AttachmentFiles& files, DifferenceReporter& reporter,
                        VerifiedType& tally);

}  // namespace tool

#endif
