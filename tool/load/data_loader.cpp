#include "tool/load/data_loader.h"

#include "tool/io/source_error.h"
#include "tool/process/interrupt.h"

namespace tool {

DataLoader::DataLoader(SourceWalk& walk, const Parts& parts)
    : m_walk(walk),
      m_parts(parts),
      m_records(
          walk, LimitsOfReading(),
          // Losses that are found after a record are reported after the news of it.
          [this](const SourceRecord& record) {
              m_lastRead = record.ordinal;
              HoldNews(record.ordinal);
          },
          [this](const std::shared_ptr<Package>& package) { Give(package); }),
      m_expected(parts.schema) {}

DataLoader::~DataLoader() {
    if (m_parts.crew != nullptr) {
        m_parts.crew->Drop();
    }
}

RecordsAhead::Limits DataLoader::LimitsOfReading() const {
    RecordsAhead::Limits limits{.records = 0, .bytes = RecordGroup::kBytes, .packages = 1};
    if (m_parts.looksAhead && m_parts.loader.IsGathered()) {
        limits.records = m_parts.options.groupRecords;
        limits.packages = m_parts.crew != nullptr ? m_parts.crew->Packages() : 1;
    }
    return limits;
}

void DataLoader::HoldNews(std::uint64_t ordinal) {
    m_parts.sinks.Hold({.read = m_parts.journal.PlaceOf(ordinal)});
}

// Losses that are found while reading ahead are reported after the records that were read before.
WalkStep DataLoader::NextRecord() {
    if (m_parts.crew != nullptr && m_lastRead) {
        HoldNews(*m_lastRead);
    }
    return m_records.Next();
}

// Has a package that was read gone through ahead of its turn.
void DataLoader::Give(const std::shared_ptr<Package>& package) {
    if (m_parts.crew == nullptr) {
        return;
    }
    if (!m_configuration) {
        m_configuration = std::make_shared<const ImportConfiguration>(m_walk.Configuration());
    }
    // Attachments are written at once.
    bool isPlain = m_configuration->Data() != ImportedData::Attachments;
    for (std::size_t i = 0; i < package->records.Count(); ++i) {
        const RecordTask task = m_parts.journal.Journal().TaskOf(package->records.At(i).ordinal);
        isPlain = isPlain && task != RecordTask::TakeUp;
        package->isDue.push_back(task != RecordTask::Pass);
    }
    package->configuration = m_configuration;
    package->guarded = m_walk.IsGuarded();
    package->source = m_walk.SourceName();
    if (isPlain) {
        m_parts.crew->Give(package);
    }
}

void DataLoader::TellCrew() {
    if (m_parts.crew != nullptr) {
        const LoadJournal& journal = m_parts.journal.Journal();
        const bool isKept = m_parts.group.IsPermanent();
        m_parts.crew->Tell(
            {.moment = m_parts.group.Moment(),
             .key = journal.Key(),
             .run = journal.Run() - (isKept ? 0 : 1),  // with this one it was taken up
             .handled = isKept ? journal.HandledForGood() : journal.HandledBefore(),
             .watched = m_parts.loader.Watched()});
    }
}

// Takes over what a worker has done with the package that begins with the current record, and goes
// to its last one.
bool DataLoader::TakeDoneAhead() {
    if (m_parts.crew == nullptr || !m_records.IsFirst()) {
        return false;
    }
    Package& package = m_records.Current();
    const bool isDone = m_parts.crew->TakeBack(package);
    if (const std::string why = m_parts.crew->TakeTrouble(); !why.empty()) {
        m_parts.sinks.Warn("warning: the load goes on with fewer workers for now, since there is " +
                           why);
    }
    if (!isDone || !m_parts.loader.Adopt(package)) {
        m_parts.sinks.AddInTurn();
        EndAdopted();
        return false;
    }
    m_parts.sinks.AddAhead();
    for (std::size_t i = 0;; ++i) {
        const SourceRecord& record = package.records.At(i);
        m_number = record.ordinal + 1;
        HoldNews(record.ordinal);
        m_parts.sinks.AddRead();
        m_parts.losses.TakeOver(package.losses[i]);
        if (package.isDue[i]) {
            m_parts.loader.NoteAdopted(record, package.done[i]);
        } else {
            m_parts.sinks.PassOver(1);
        }
        m_parts.sinks.Advance(m_records.BytesRead());
        if (m_records.IsLast()) {
            break;
        }
        m_records.Step();
    }
    // Where the next ones are ready, one commit does for all of them.
    const Package* const next = m_records.Following();
    if (next == nullptr || !m_parts.crew->HasDone(*next) || !m_parts.loader.MayAdoptMore()) {
        EndAdopted();
    }
    return true;
}

void DataLoader::EndAdopted() {
    if (m_parts.group.IsOpen()) {
        m_parts.loader.EndGroup(false);
        TellCrew();
    }
}

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

// A look-up in the database first writes what was gathered, which may be refused. False when the
// load is to end.
bool DataLoader::Examine(const SourceRecord& record) {
    if (m_parts.loader.Do([&] { m_parts.losses.Examine(record); })) {
        return true;
    }
    if (m_parts.loader.MustStop()) {
        return false;
    }
    m_parts.losses.Examine(record);
    return true;
}

bool DataLoader::LoadRecords() {
    TellCrew();
    WalkStep step = WalkStep::Data;
    while (!m_parts.loader.HasTooManyRejects() && (step = NextRecord()) == WalkStep::Record) {
        if (TakeDoneAhead()) {
            continue;
        }
        if (m_parts.loader.MustStop()) {
            break;
        }
        const SourceRecord& record = m_records.Record();
        m_number = record.ordinal + 1;
        if (m_parts.loader.IsGathered()) {
            HoldNews(record.ordinal);
        }
        m_parts.sinks.AddRead();
        if (!Examine(record)) {
            break;
        }
        if (m_parts.journal.Journal().TaskOf(record.ordinal) == RecordTask::Pass) {
            m_parts.sinks.PassOver(1);
        } else {
            m_parts.loader.Load(record, [this] { LookAhead(); });
        }
        m_parts.sinks.Advance(m_records.BytesRead());
        ++m_number;
        if (m_parts.crew != nullptr && m_records.IsLast()) {
            // Packages that were done ahead go into groups of their own: end the one that is open.
            if (m_parts.group.IsOpen()) {
                m_parts.loader.EndGroup(false);
            }
            TellCrew();
        }
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
