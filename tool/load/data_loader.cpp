#include "tool/load/data_loader.h"

#include <optional>
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
      m_expected(parts.schema),
      m_isGathered(parts.group.IsGathered()),
      m_keepsRecords(m_isGathered || parts.recovery.IsPossible()) {}

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
        if (m_isGathered) {
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
    if (m_keepsRecords) {
        m_kept.Add(record);
    }
    bool isDone = false;
    const bool hasGroupEnded = !DoUntilKept(
        [&] {
            LookAhead();
            isDone = Work(record);
        },
        false);
    if (!hasGroupEnded && isDone &&
        m_parts.group.AddRecord(record.packet.size() + record.raw.size())) {
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
    if (m_journal.WasToldRejected(record.ordinal)) {
        m_journal.OpenGroup();
        m_journal.NoteRejected(record.ordinal);
        return true;
    }
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
    DoUntilKept([&] { Commit(atEnd); }, atEnd);
}

void DataLoader::Commit(bool atEnd) {
    if (atEnd) {
        m_journal.NoteEnd();
    }
    m_journal.Commit();
    FinishGroup();
}

void DataLoader::FinishGroup() {
    m_parts.rejecter.Keep();
    m_kept.Clear();
}

// Does `step` with the current group. When the database undoes the group, it is done again, as long
// as that makes sense, and ended; `atEnd`: with the source. Returns whether `step` came to its end
// itself.
template <typename Step>
bool DataLoader::DoUntilKept(Step step, bool atEnd) {
    std::optional<Redo> redo;
    for (int failures = 1;; ++failures) {
        try {
            if (!redo) {
                step();
                return true;
            }
            DoAgain(*redo, atEnd);
            return false;
        } catch (const recorddb::sql::Error& error) {
            redo = UndoAfter(error, failures);
        }
    }
}

// Undoes the group after a failure, and says how it is to be done again; throws the failure where
// that would not help. What was gathered may be refused because of one of the records: which one
// shows when they are written one by one.
DataLoader::Redo DataLoader::UndoAfter(const recorddb::sql::Error& error, int failures) {
    const bool mayPass = m_keepsRecords && !m_parts.options.wholePackets &&
                         m_parts.recovery.MayPass(error, failures);
    if (mayPass && error.Kind() == recorddb::sql::ErrorKind::ConnectionLost) {
        m_parts.group.Undo();
        m_parts.recovery.GetReady(error, failures);
        return Redo::IfUndone;
    }
    const bool isOfARecord =
        m_parts.group.IsGathered() &&
        (error.IsConstraint() || error.Kind() == recorddb::sql::ErrorKind::Conflict);
    if (!mayPass && !isOfARecord) {
        throw;
    }
    m_journal.Undo();
    if (mayPass) {
        m_parts.recovery.GetReady(error, failures);
    }
    return mayPass ? Redo::AsGroup : Redo::OneByOne;
}

void DataLoader::DoAgain(Redo redo, bool atEnd) {
    if (redo == Redo::IfUndone && m_journal.TakeUpAgain()) {
        FinishGroup();
        return;
    }
    if (redo != Redo::OneByOne) {
        m_parts.sinks.AddRetry();
    }
    if (m_parts.sinks.HasToldAny()) {
        m_parts.rejecter.Keep();
    } else {
        m_parts.rejecter.Undo();
    }
    const bool isGathered = m_isGathered && redo != Redo::OneByOne;
    m_parts.group.SetWriting(isGathered ? recorddb::Writing::Gathered : recorddb::Writing::AtOnce);
    bool isWhole = true;
    for (std::size_t i = 0; isWhole && i < m_kept.Count(); ++i) {
        if (m_isGathered) {
            m_parts.sinks.Hold(m_kept.At(i).ordinal);
        }
        isWhole = Work(m_kept.At(i));
    }
    Commit(atEnd && isWhole);
    m_parts.group.SetWriting(m_isGathered ? recorddb::Writing::Gathered
                                          : recorddb::Writing::AtOnce);
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
