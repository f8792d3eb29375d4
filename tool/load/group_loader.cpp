#include "tool/load/group_loader.h"

#include <optional>
#include <utility>

#include "tool/process/interrupt.h"

namespace tool {

GroupLoader::GroupLoader(const Parts& parts, const AdPtr<recorddb::Session>& session)
    : m_parts(parts),
      m_importers(session, parts.group),
      m_waitingRecords(parts.room, parts.schema, session),
      m_isGathered(parts.group.IsGathered()),
      m_keepsRecords(m_isGathered || parts.recovery.IsPossible()) {}

bool GroupLoader::HasTooManyRejects() const {
    const auto& most = m_parts.options.maxRejects;
    return most && m_parts.sinks.Rejected() > *most;
}

bool GroupLoader::MustStop() const {
    return Interrupted() != 0 || HasTooManyRejects();
}

void GroupLoader::Load(const SourceRecord& record, const std::function<void()>& prepare) {
    if (m_keepsRecords) {
        m_kept.Add(record);
    }
    bool isDone = false;
    const bool hasGroupEnded = !DoUntilKept(
        [&] {
            prepare();
            isDone = Work(record);
        },
        false);
    if (!hasGroupEnded && isDone) {
        CountInGroup(record);
    }
    LoadReady();
}

// Deals with a record that has just been read. False when it is left for the load that continues
// this one.
bool GroupLoader::Work(const SourceRecord& record) {
    GroupJournal& journal = m_parts.journal;
    const Place place = journal.PlaceOf(record.ordinal);
    m_time = {.read = place};
    if (journal.WasToldRejected(place)) {
        journal.OpenGroup();
        journal.NoteRejected(place);
        return true;
    }
    std::string error = record.error;
    if (record.defect == RecordDefect::None) {
        if (journal.Journal().TaskOf(record.ordinal) == RecordTask::TakeUp) {
            return TakeUp(record, place);
        }
        const ImportConfiguration& configuration = journal.Current().configuration;
        if (m_waitingRecords.IsHeldBack(record, configuration)) {
            journal.OpenGroup();
            m_waitingRecords.PutOff(place, record, configuration, {});
            journal.NoteWaiting(place, false);
            return true;
        }
        if (Import(record.packet, place, error)) {
            return true;
        }
        if (Interrupted() != 0) {
            // It may have failed because of the signal. The load that continues this one tries it
            // again.
            return false;
        }
        return PutOffIfMissing(record, place, error);
    }
    if (Interrupted() != 0) {
        return false;
    }
    Reject(record, place, error, m_parts.rejecter.Missing(record, journal.Current().configuration));
    journal.NoteRejected(place);
    return true;
}

// Goes on with a record that waited when an earlier load stopped: it waits for what is missing now,
// and is ready when that load had come to know all of it.
bool GroupLoader::TakeUp(const SourceRecord& record, Place place) {
    GroupJournal& journal = m_parts.journal;
    const ImportConfiguration& configuration = journal.Current().configuration;
    journal.OpenGroup();
    std::vector<WantedRecord> missing;
    if (!m_waitingRecords.IsHeldBack(record, configuration)) {
        missing = m_parts.rejecter.Missing(record, configuration);
    }
    m_waitingRecords.PutOff(place, record, configuration, missing);
    journal.NoteWaiting(place, true);
    return true;
}

// Puts a record off that was refused, or rejects it when nothing that it needs is missing.
bool GroupLoader::PutOffIfMissing(const SourceRecord& record, Place place, std::string& error) {
    GroupJournal& journal = m_parts.journal;
    const ImportConfiguration& configuration = journal.Current().configuration;
    journal.OpenGroup();
    const std::vector<WantedRecord> missing = m_parts.rejecter.Missing(record, configuration);
    if (missing.empty()) {
        Reject(record, place, error, missing);
        journal.NoteRejected(place);
    } else {
        m_waitingRecords.PutOff(place, record, configuration, missing);
        journal.NoteWaiting(place, false);
    }
    return true;
}

void GroupLoader::Reject(const SourceRecord& record, Place place, const std::string& reason,
                         std::vector<WantedRecord> missing) {
    GroupJournal& journal = m_parts.journal;
    journal.OpenGroup();
    m_parts.rejecter.Reject(record, {.place = place,
                                     .configuration = journal.SourceAt(place).configuration,
                                     .isInForce = journal.IsCurrent(place),
                                     .reason = reason,
                                     .missing = std::move(missing)});
}

bool GroupLoader::Import(std::string_view packet, Place place, std::string& error) {
    GroupJournal& journal = m_parts.journal;
    const LoadedSource& source = journal.SourceAt(place);
    AtomicImport::Result result = journal.IsCurrent(place)
                                      ? m_parts.import.Import(packet, source.configuration.Data())
                                      : m_importers.Import(source, packet);
    if (!result.error.empty()) {
        m_waitingRecords.DropWritten();
        error = std::move(result.error);
        return false;
    }
    m_waitingRecords.NoteWritten();
    journal.NoteImported(place, result.done);
    return true;
}

// Tries the waiting records that are ready, in groups. False when that is to end early.
bool GroupLoader::LoadReady() {
    while (!m_parts.room.IsEmpty() && m_parts.room.FirstReady()) {
        if (MustStop()) {
            return false;
        }
        LoadWaiting(Try::Again);
    }
    return true;
}

void GroupLoader::LoadWaiting(Try which) {
    bool isDone = false;
    const bool hasGroupEnded = !DoUntilKept([&] { isDone = TryNext(which); }, false);
    if (!hasGroupEnded && isDone) {
        CountInGroup(m_waiting.Record());
    }
}

void GroupLoader::CountInGroup(const SourceRecord& record) {
    if (m_parts.group.AddRecord(record.packet.size() + record.raw.size())) {
        EndGroup(false);
    }
}

bool GroupLoader::EndWaiting(const std::function<void()>& advance) {
    if (m_parts.room.IsEmpty()) {
        return true;
    }
    m_isEnding = true;
    bool goesOn = LoadReady();
    while (goesOn && !MustStop() && m_parts.room.FirstWaiting()) {
        LoadWaiting(Try::Last);
        advance();
        goesOn = LoadReady();
    }
    EndGroup(false);
    return goesOn && !MustStop();
}

// Tries the first record that is ready, or a last time the first one that waits. False when it is
// left for the load that continues this one.
bool GroupLoader::TryNext(Try which) {
    const auto place =
        which == Try::Again ? m_parts.room.FirstReady() : m_parts.room.FirstWaiting();
    ++m_tries;
    ++m_time.tries;
    if (m_isGathered) {
        m_parts.sinks.Hold(m_time);
    }
    m_parts.journal.OpenGroup();
    m_parts.room.Read(*place, m_waiting);
    return TryWaiting(*place, which);
}

bool GroupLoader::TryWaiting(Place place, Try which) {
    GroupJournal& journal = m_parts.journal;
    const SourceRecord& record = m_waiting.Record();
    if (journal.WasToldRejected(place)) {
        journal.NoteWaitingEnds(place);
        journal.NoteRejected(place);
        m_parts.room.Leave(place);
        return true;
    }
    std::string error;
    const bool isImported = Import(record.packet, place, error);
    if (!isImported && Interrupted() != 0) {
        return false;
    }
    const ImportConfiguration& configuration = journal.SourceAt(place).configuration;
    if (!isImported) {
        std::vector<WantedRecord> missing = m_parts.rejecter.Missing(record, configuration);
        if (which == Try::Again && !missing.empty()) {
            m_waitingRecords.PutOffAgain(place, record, configuration, missing);
            return true;
        }
        Reject(record, place, error, std::move(missing));
        journal.NoteRejected(place);
    }
    journal.NoteWaitingEnds(place);
    m_parts.room.Leave(place);
    return true;
}

bool GroupLoader::Adopt(Package& package) {
    if (package.work == nullptr || (m_parts.group.IsOpen() && m_adopted == 0) ||
        !m_waitingRecords.AreUnconcernedBy(package)) {
        return false;
    }
    bool isAdopted = false;
    const bool isOpen =
        DoUntilKept([&] { isAdopted = m_parts.group.Adopt(*package.work, package.moment); }, false);
    m_adopted += isOpen && isAdopted ? 1 : 0;
    return isOpen && isAdopted;
}

void GroupLoader::NoteAdopted(const SourceRecord& record, const LoadTotals& done) {
    const Place place = m_parts.journal.PlaceOf(record.ordinal);
    m_time = {.read = place};
    m_kept.Add(record);
    m_adoptedBytes += record.packet.size() + record.raw.size();
    m_parts.journal.NoteImported(place, done);
}

void GroupLoader::EndGroup(bool atEnd) {
    DoUntilKept([&] { Commit(atEnd); }, atEnd);
}

void GroupLoader::Commit(bool atEnd) {
    if (atEnd) {
        m_parts.journal.NoteEnd();
    }
    // What was found in reading ahead comes after the news of the records before it.
    m_parts.journal.Commit(m_parts.readsFar && !atEnd ? m_time : NewsTime::End());
    FinishGroup();
}

void GroupLoader::FinishGroup() {
    m_parts.rejecter.Keep();
    m_kept.Clear();
    m_tries = 0;
    m_adopted = 0;
    m_adoptedBytes = 0;
    m_timeAtGroup = m_time;
}

// Does `step` with the current group. When the database undoes the group, it is done again, as long
// as that makes sense, and ended; `atEnd`: with the source. Returns whether `step` came to its end
// itself.
template <typename Step>
bool GroupLoader::DoUntilKept(Step step, bool atEnd) {
    std::optional<Redo> redo;
    for (int failures = 1;; ++failures) {
        try {
            if (!redo) {
                step();
                return true;
            }
            if (*redo == Redo::IfUndone && m_parts.journal.TakeUpAgain()) {
                FinishGroup();
                return false;
            }
            if (m_adopted == 0) {
                DoAgain(*redo, atEnd);
                return false;
            }
        } catch (const recorddb::sql::Error& error) {
            redo = UndoAfter(error, failures);
            continue;
        }
        LoadInTurn(*redo, atEnd);
        return false;
    }
}

bool GroupLoader::Do(const std::function<void()>& step) {
    return DoUntilKept(step, false);
}

// Undoes the group after a failure, and says how it is to be done again; throws the failure where
// that would not help. What was gathered may be refused because of one of the records: which one
// shows when they are written one by one.
GroupLoader::Redo GroupLoader::UndoAfter(const recorddb::sql::Error& error, int failures) {
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
    m_parts.journal.Undo();
    if (mayPass) {
        m_parts.recovery.GetReady(error, failures);
    }
    return mayPass ? Redo::AsGroup : Redo::OneByOne;
}

void GroupLoader::BeginAgain(Redo redo) {
    if (redo != Redo::OneByOne) {
        m_parts.sinks.AddRetry();
    }
    if (m_parts.sinks.HasToldAny()) {
        m_parts.rejecter.Keep();
    } else {
        m_parts.rejecter.Undo();
    }
    m_waitingRecords.DropWritten();
    m_time = m_timeAtGroup;
}

// What was done ahead goes in turn after all, in the groups that one worker would have made of it:
// together, what one of them writes could hide what is refused of another.
void GroupLoader::LoadInTurn(Redo redo, bool atEnd) {
    BeginAgain(redo);
    KeptRecords records;
    std::swap(records, m_kept);
    FinishGroup();
    std::size_t next = 0;
    for (; next < records.Count() && !MustStop(); ++next) {
        const SourceRecord& record = records.At(next);
        m_parts.sinks.Hold({.read = m_parts.journal.PlaceOf(record.ordinal)});
        Load(record, [] {});
    }
    EndGroup(atEnd && next == records.Count());
}

void GroupLoader::DoAgain(Redo redo, bool atEnd) {
    BeginAgain(redo);
    const bool isGathered = m_isGathered && redo != Redo::OneByOne;
    m_parts.group.SetWriting(isGathered ? recorddb::Writing::Gathered : recorddb::Writing::AtOnce);
    const bool isWhole = DoRecordsAgain();
    Commit(atEnd && isWhole);
    m_parts.group.SetWriting(m_isGathered ? recorddb::Writing::Gathered
                                          : recorddb::Writing::AtOnce);
}

// Does the records of the group again: those that were read, after each of them those that became
// ready, and in the end not more than have been tried before, since the group may have ended there.
// False when some of it is left for the load that continues this one.
bool GroupLoader::DoRecordsAgain() {
    const std::uint64_t tries = std::exchange(m_tries, 0);
    for (std::size_t i = 0; i < m_kept.Count(); ++i) {
        while (m_parts.room.FirstReady()) {
            if (!TryNext(Try::Again)) {
                return false;
            }
        }
        if (m_isGathered) {
            m_parts.sinks.Hold({.read = m_parts.journal.PlaceOf(m_kept.At(i).ordinal)});
        }
        if (!Work(m_kept.At(i))) {
            return false;
        }
    }
    bool isDone = true;
    while (isDone && m_tries < tries) {
        if (m_parts.room.FirstReady()) {
            isDone = TryNext(Try::Again);
        } else if (m_isEnding && m_parts.room.FirstWaiting()) {
            isDone = TryNext(Try::Last);
        } else {
            break;
        }
    }
    return isDone;
}

}  // namespace tool
