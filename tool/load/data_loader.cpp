#include "tool/load/data_loader.h"

#include <utility>

#include "tool/io/source_error.h"
#include "tool/process/interrupt.h"

namespace tool {

DataLoader::DataLoader(SourceWalk& walk, GroupJournal& journal, const Parts& parts)
    : m_walk(walk),
      m_journal(journal),
      m_parts(parts),
      m_records(walk, parts.looksAhead && parts.group.IsGathered() ? RecordGroup::kRecords : 0,
                RecordGroup::kBytes,
                // Losses that are found after a record are reported after the news of it.
                [this](const SourceRecord& record) { m_parts.sinks.Hold(record.ordinal); }),
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

bool DataLoader::PassOver() {
    const std::uint64_t records = m_journal.Journal().HandledBefore();
    m_parts.sinks.AddRead(records);
    m_parts.sinks.PassOver(records);
    return !m_parts.losses.ExaminesRecords() || ExamineRecords();
}

bool DataLoader::LoadRecords() {
    WalkStep step = WalkStep::Data;
    while (!HasTooManyRejects() && (step = m_records.Next()) == WalkStep::Record) {
        const SourceRecord& record = m_records.Record();
        m_number = record.ordinal + 1;
        if (m_parts.group.IsGathered()) {
            m_parts.sinks.Hold(record.ordinal);
        }
        m_parts.sinks.AddRead();
        m_parts.losses.Examine(record);
        if (m_journal.Journal().TaskOf(record.ordinal) == RecordTask::Pass) {
            m_parts.sinks.PassOver(1);
        } else {
            LoadRecord(record);
        }
        m_parts.sinks.Advance(m_records.BytesRead());
        ++m_number;
    }
    EndGroup(step == WalkStep::DataEnd);
    return step == WalkStep::DataEnd;
}

void DataLoader::LoadRecord(const SourceRecord& record) {
    if (m_parts.group.IsGathered()) {
        m_kept.Add(record);
    }
    bool isDone = false;
    try {
        LookAhead();
        isDone = Work(record);
    } catch (const recorddb::sql::Error& error) {
        if (!MayDoAgain(error)) {
            throw;
        }
        DoAgain();
        return;
    }
    if (isDone && m_parts.group.AddRecord(record.packet.size() + record.raw.size())) {
        EndGroup(false);
    }
}

// Asks for what the records that have been read will need, when these have just been read, or when
// a new group forgets what was known for the last one.
void DataLoader::LookAhead() {
    if (!m_records.ReadsAhead() || !(m_records.IsFirst() || !m_parts.group.IsOpen())) {
        return;
    }
    m_expected.Clear();
    m_records.ForEachRead([this](const SourceRecord& record) {
        if (m_journal.Journal().TaskOf(record.ordinal) != RecordTask::Pass) {
            m_expected.Add(record, m_walk.Configuration());
        }
    });
    m_parts.group.Open().LookAhead(m_expected.All());
}

// Imports or rejects a record. False when it is left for the load that continues this one.
bool DataLoader::Work(const SourceRecord& record) {
    std::string error = record.error;
    if (record.defect != RecordDefect::None || !Import(record.packet, record.ordinal, error)) {
        if (Interrupted() != 0) {
            // It may have failed because of the signal. The load that continues this one tries it
            // again.
            return false;
        }
        m_journal.OpenGroup();
        m_parts.rejecter.Reject(record, m_walk, error);
        m_journal.NoteRejected(record.ordinal);
    }
    return true;
}

// Ends the group; `atEnd`: the source holds no more records.
void DataLoader::EndGroup(bool atEnd) {
    try {
        Commit(atEnd);
    } catch (const recorddb::sql::Error& error) {
        if (!MayDoAgain(error)) {
            throw;
        }
        DoAgain();
        if (atEnd) {
            Commit(atEnd);
        }
    }
}

void DataLoader::Commit(bool atEnd) {
    if (atEnd) {
        m_journal.NoteEnd();
    }
    m_journal.Commit();
    m_parts.rejecter.Keep();
    m_kept.Clear();
}

// True when what was gathered was refused because of one of the records. Which one shows when they
// are written one by one.
bool DataLoader::MayDoAgain(const recorddb::sql::Error& error) const {
    return m_parts.group.IsGathered() &&
           (error.IsConstraint() || error.Kind() == recorddb::sql::ErrorKind::Conflict);
}

// Undoes the current group and does its records again, each written by itself.
void DataLoader::DoAgain() {
    m_journal.Undo();
    m_parts.rejecter.Undo();
    m_parts.group.SetWriting(recorddb::Writing::AtOnce);
    for (std::size_t i = 0; i < m_kept.Count(); ++i) {
        m_parts.sinks.Hold(m_kept.At(i).ordinal);
        if (!Work(m_kept.At(i))) {
            break;
        }
    }
    Commit(false);
    m_parts.group.SetWriting(recorddb::Writing::Gathered);
}

bool DataLoader::LoadWhole() {
    // An earlier load has imported some of the records one by one; the whole packet would import
    // them again.
    if (m_journal.Journal().HandledBefore() > 0) {
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
    if (error.empty() && Import(whole.text, 0, error)) {
        m_journal.NoteEnd();
        m_journal.Commit();
    } else {
        RejectWhole(whole, error);
    }
    return Interrupted() == 0 && !HasTooManyRejects();
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
        m_journal.OpenGroup();
        m_parts.rejecter.Reject(record, m_walk, error);
        m_parts.sinks.Secure();
    }
    m_journal.CommitUnnoted();
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

// Imports one packet. When it fails, sets `error` to the reason, and nothing of it is written.
bool DataLoader::Import(std::string_view packet, std::uint64_t ordinal, std::string& error) {
    AtomicImport::Result result = m_parts.import.Import(packet, m_walk.Configuration().Data());
    if (!result.error.empty()) {
        error = std::move(result.error);
        return false;
    }
    m_journal.NoteImported(ordinal, result.done);
    return true;
}

bool DataLoader::HasTooManyRejects() const {
    const auto& most = m_parts.options.maxRejects;
    return most && m_parts.sinks.Rejected() > *most;
}

}  // namespace tool
