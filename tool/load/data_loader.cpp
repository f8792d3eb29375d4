#include "tool/load/data_loader.h"

#include "tool/io/source_error.h"
#include "tool/process/interrupt.h"

namespace tool {

DataLoader::DataLoader(SourceWalk& walk, const Parts& parts)
    : m_walk(walk),
      m_parts(parts),
      m_records(walk, parts.looksAhead && parts.loader.IsGathered() ? RecordGroup::kRecords : 0,
                RecordGroup::kBytes,
                // Losses that are found after a record are reported after the news of it.
                [this](const SourceRecord& record) {
                    m_parts.sinks.Hold({.read = m_parts.journal.PlaceOf(record.ordinal)});
                }),
      m_expected(parts.schema) {}

bool DataLoader::Load() {
    try {
        return m_parts.options.wholePackets ? LoadWhole() : LoadRecords();
    } catch (...) {
        // Rejected records of the current group are still reported, though the next load reads them
        // again.
        m_parts.sinks.TellHeld();
        throw;
    }
}

bool DataLoader::PassOver(std::uint64_t records) {
    m_parts.sinks.AddRead(records);
    m_parts.sinks.PassOver(records);
    return !m_parts.losses.ExaminesRecords() || ExamineRecords();
}

bool DataLoader::LoadRecords() {
    WalkStep step = WalkStep::Data;
    while (!m_parts.loader.HasTooManyRejects() && (step = m_records.Next()) == WalkStep::Record) {
        const SourceRecord& record = m_records.Record();
        m_number = record.ordinal + 1;
        if (m_parts.loader.IsGathered()) {
            m_parts.sinks.Hold({.read = m_parts.journal.PlaceOf(record.ordinal)});
        }
        m_parts.sinks.AddRead();
        m_parts.losses.Examine(record);
        if (m_parts.journal.Journal().TaskOf(record.ordinal) == RecordTask::Pass) {
            m_parts.sinks.PassOver(1);
        } else {
            m_parts.loader.Load(record, [this] { LookAhead(); });
        }
        m_parts.sinks.Advance(m_records.BytesRead());
        ++m_number;
    }
    m_parts.loader.EndGroup(step == WalkStep::DataEnd);
    return step == WalkStep::DataEnd;
}

// Asks for what the records that have been read will need, when these have just been read, or when
// a new group forgets what was known for the last one.
void DataLoader::LookAhead() {
    if (!m_records.ReadsAhead() || !(m_records.IsFirst() || !m_parts.group.IsOpen())) {
        return;
    }
    m_expected.Clear();
    m_records.ForEachRead([this](const SourceRecord& record) {
        if (m_parts.journal.Journal().TaskOf(record.ordinal) != RecordTask::Pass) {
            m_expected.Add(record, m_walk.Configuration());
        }
    });
    m_parts.group.Open().LookAhead(m_expected.All());
}

bool DataLoader::LoadWhole() {
    // An earlier load has imported some of the records one by one; the whole packet would import
    // them again.
    if (m_parts.journal.Journal().HandledBefore() > 0) {
        throw SourceError(m_walk.SourceName() +
                          ": an earlier load has imported some of its records one by one; "
                          "finish that without --whole-packets first");
    }
    if (!ExamineRecords()) {
        return false;
    }
    const WholePacket whole = m_walk.ReadWhole();
    std::string error = whole.error;
    m_parts.sinks.AddRead();
    GroupJournal& journal = m_parts.journal;
    if (error.empty() && m_parts.loader.Import(whole.text, journal.PlaceOf(0), error)) {
        journal.NoteEnd();
        journal.Commit();
    } else {
        RejectWhole(whole, error);
    }
    return Interrupted() == 0 && !m_parts.loader.HasTooManyRejects();
}

// Not noted in the journal: nothing of the packet has been imported, and the next load, by records
// or whole, begins at its start.
void DataLoader::RejectWhole(const WholePacket& whole, const std::string& error) {
    if (Interrupted() == 0) {
        SourceRecord record;
        record.raw = whole.Raw();
        record.source = m_walk.SourceName();
        record.line = 1;
        record.guarded = m_walk.IsGuarded();
        m_parts.journal.OpenGroup();
        const ImportConfiguration& configuration = m_walk.Configuration();
        m_parts.rejecter.Reject(record,
                                {.place = m_parts.journal.PlaceOf(0),
                                 .configuration = configuration,
                                 .isInForce = true,
                                 .reason = error,
                                 .missing = m_parts.rejecter.Missing(record, configuration)});
        m_parts.sinks.Secure();
    }
    m_parts.journal.CommitUnnoted();
}

// Reads all records only to find losses, in them and between them. False when that was interrupted.
bool DataLoader::ExamineRecords() {
    WalkStep step = WalkStep::Data;
    while ((step = m_walk.Next()) == WalkStep::Record) {
        m_parts.losses.Examine(m_walk.Record());
        m_parts.sinks.Advance(m_walk.BytesRead());
    }
    return step == WalkStep::DataEnd;
}

}  // namespace tool
