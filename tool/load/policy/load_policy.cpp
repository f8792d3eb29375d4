#include "tool/load/policy/load_policy.h"

#include "recorddb/sql.h"
#include "tool/load/policy/unfinished_sources.h"
#include "tool/process/interrupt.h"

namespace tool {

recorddb::SessionOptions SessionFor(const LoadOptions& options, const LoadPolicy& policy) {
    recorddb::SessionOptions session;
    session.attachmentsFolder = options.attachments.string();
    session.maxAttachmentSize = options.maxAttachmentSize;
    session.references = {.maxTries = options.maxReferenceTries,
                          .stopRequested = [] { return Interrupted() != 0; }};
    policy.Adjust(session);
    return session;
}

recorddb::Writing PermanentLoad::WritingFor(const LoadOptions& options) const {
    const bool oneByOne = options.wholePackets || !options.trace.empty() || FindsLosses(options);
    return oneByOne ? recorddb::Writing::AtOnce : recorddb::Writing::Gathered;
}

std::string PermanentLoad::AdviseOnChange(std::uint64_t handled) const {
    return handled > 0 ? AdviseOnChangedSource(handled) : "";
}

std::string_view PermanentLoad::WhatStays(const LoadOptions& options) const {
    return options.fresh ? "Everything up to here is in the database; go on without --fresh."
                         : "Everything up to here is in the database; the same command goes on.";
}

void Rehearsal::Adjust(recorddb::SessionOptions& options) const {
    options.examineAttachments = true;
}

LoadPolicy::Transaction Rehearsal::Begin(recorddb::Session& session) const {
    return session.BeginTransaction();
}

recorddb::Writing Rehearsal::WritingFor(const LoadOptions& options) const {
    const bool oneByOne = options.wholePackets || !options.trace.empty() ||
                          !recorddb::sql::IsServerUrl(options.database);
    return oneByOne ? recorddb::Writing::AtOnce : recorddb::Writing::Gathered;
}

std::string_view Rehearsal::WhatStays(const LoadOptions& /*options*/) const {
    return "The database is as it was before.";
}

}  // namespace tool
