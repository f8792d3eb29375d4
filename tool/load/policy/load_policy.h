#ifndef TOOL_LOAD_POLICY_LOAD_POLICY_H
#define TOOL_LOAD_POLICY_LOAD_POLICY_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "recorddb/session.h"
#include "recorddb/session_options.h"
#include "tool/load/policy/load_options.h"

namespace tool {

// In what a load and its rehearsal differ, which go the same way otherwise: what becomes of their
// work, and what else they look for.
class LoadPolicy {
  public:
    using Transaction = std::unique_ptr<recorddb::SessionTransaction>;

    LoadPolicy() = default;
    LoadPolicy(const LoadPolicy&) = delete;
    LoadPolicy& operator=(const LoadPolicy&) = delete;
    virtual ~LoadPolicy() = default;

    // Changes what the session is asked for.
    virtual void Adjust(recorddb::SessionOptions& options) const = 0;

    // Begins the work: opens the transaction of which all groups are parts, or returns null. Throws
    // sql::Error.
    virtual Transaction Begin(recorddb::Session& session) const = 0;

    // How the records of a group are written.
    virtual recorddb::Writing WritingFor(const LoadOptions& options) const = 0;

    // Whether a group stays when a later one is undone.
    virtual bool KeepsGroups() const = 0;

    // Whether to look for what the import drops silently, also in records that need not be imported
    // any more.
    virtual bool FindsLosses(const LoadOptions& options) const = 0;
    // Whether a loss makes the outcome an incomplete one.
    virtual bool MindsLosses() const = 0;

    // Whether records that no configuration comes before are an error, which ends the load;
    // otherwise they are reported as a loss and passed over.
    virtual bool NeedsConfiguration() const = 0;

    // What is to be done, as a sentence, when a source changes of which `handled` records have been
    // dealt with; empty: nothing, since none of them is kept.
    virtual std::string AdviseOnChange(std::uint64_t handled) const = 0;

    // For people, before what becomes of records: "were", or "would be".
    virtual std::string_view Were() const = 0;
    // What is in the database after a load that stopped, as a sentence for people.
    virtual std::string_view WhatStays(const LoadOptions& options) const = 0;
};

// Keeps what it imports, group by group.
class PermanentLoad final : public LoadPolicy {
  public:
    void Adjust(recorddb::SessionOptions& /*options*/) const override {}
    Transaction Begin(recorddb::Session& /*session*/) const override { return nullptr; }
    // Gathered, except where records have to be written one by one: for traces, which tell of each
    // at once, for the search for losses, and for whole packets, whose records cannot be done again
    // by themselves.
    recorddb::Writing WritingFor(const LoadOptions& options) const override;
    bool KeepsGroups() const override { return true; }
    // Only for the page for people: the search would add a tenth to the time of every load.
    bool FindsLosses(const LoadOptions& options) const override { return !options.html.empty(); }
    bool MindsLosses() const override { return false; }
    bool NeedsConfiguration() const override { return true; }
    std::string AdviseOnChange(std::uint64_t handled) const override;
    std::string_view Were() const override { return "were"; }
    std::string_view WhatStays(const LoadOptions& options) const override;
};

// Keeps nothing: one transaction holds all its groups, and is undone at the end.
class Rehearsal final : public LoadPolicy {
  public:
    // The content of attachments is read, but not stored.
    void Adjust(recorddb::SessionOptions& options) const override;
    // Opens the transaction at once: what the rehearsal reads must not be changed by others
    // meanwhile.
    Transaction Begin(recorddb::Session& session) const override;
    // On a server as in a load, since each of its answers takes time.
    recorddb::Writing WritingFor(const LoadOptions& options) const override;
    bool KeepsGroups() const override { return false; }
    bool FindsLosses(const LoadOptions& /*options*/) const override { return true; }
    bool MindsLosses() const override { return true; }
    bool NeedsConfiguration() const override { return false; }
    std::string AdviseOnChange(std::uint64_t /*handled*/) const override { return {}; }
    std::string_view Were() const override { return "would be"; }
    std::string_view WhatStays(const LoadOptions& options) const override;
};

// What a load asks of its sessions.
recorddb::SessionOptions SessionFor(const LoadOptions& options, const LoadPolicy& policy);

}  // namespace tool

#endif
