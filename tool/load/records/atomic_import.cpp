#include "tool/load/records/atomic_import.h"

#include <cstdint>
#include <new>
#include <utility>

#include "tool/process/memory_watch.h"

namespace tool {

namespace {

LoadTotals TotalsOf(const ImportOutcome& outcome, ImportedData data) {
    LoadTotals totals;
    const auto count = [](std::int64_t number) { return static_cast<std::uint64_t>(number); };
    totals.history = count(outcome.done.historyEntries);
    totals.attachments = count(outcome.done.attachments);
    totals.duplicates = count(outcome.done.duplicateLinks);
    // History and attachments are committed through the record that they belong to, which does not
    // count as an update of it.
    if (data == ImportedData::Records) {
        totals.created = count(outcome.done.recordsCreated);
        totals.updated = count(outcome.done.recordsUpdated);
    }
    totals.skipped = outcome.Skipped() ? 1 : 0;
    return totals;
}

}  // namespace

AtomicImport::AtomicImport(AdPtr<recorddb::Session> session, RecordImporter& importer,
                           RecordGroup& group)
    : m_session(std::move(session)), m_importer(importer), m_group(group) {}

AtomicImport::Result AtomicImport::Import(std::string_view packet, ImportedData data) {
    const auto savepoint = m_group.Open().Savepoint();
    const std::uint64_t memoryFailures = MemoryFailures();
    const ImportOutcome outcome = m_importer.Import(packet);
    if (MemoryFailures() != memoryFailures) {
        throw std::bad_alloc();
    }
    if (const auto& failure = m_session->Failure()) {
        throw *failure;
    }
    if (outcome.Failed()) {
        savepoint->Rollback();
        return {.error = outcome.error, .done = {}};
    }
    savepoint->Release();
    return {.error = {}, .done = TotalsOf(outcome, data)};
}

}  // namespace tool
