#include "tool/load/source_loader.h"

#include <fmt/format.h>

#include <memory>
#include <new>
#include <utility>

#include "recorddb/reader/record_reader.h"
#include "tool/io/source_error.h"
#include "tool/losses/configuration_losses.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/record_fields.h"
#include "tool/process/interrupt.h"
#include "tool/process/memory_watch.h"
#include "tool/sources/source_checks.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

LoadTotals TotalsOf(const ImportOutcome& outcome, ImportedData data) {
    LoadTotals totals;
    const auto count = [](std::int64_t number) { return static_cast<std::uint64_t>(number); };
    totals.history = count(outcome.done.historyEntries);
    totals.attachments = count(outcome.done.attachments);
    totals.duplicates = count(outcome.done.duplicateLinks);
    // History and attachments are committed through the record that they belong to, which by that
    // is not updated in the sense of the word.
    if (data == ImportedData::Records) {
        totals.created = count(outcome.done.recordsCreated);
        totals.updated = count(outcome.done.recordsUpdated);
    }
    totals.skipped = outcome.Skipped() ? 1 : 0;
    return totals;
}

KeyLosses::Exists HasValue(recorddb::Database& database) {
    const auto reader = std::make_shared<recorddb::RecordReader>(database);
    return [&database, reader](const recorddb::schema::RecordType& type,
                               const recorddb::schema::Field& field, const std::string& value) {
        database.GetSearchIndexes().Ensure(type, field);
        return !reader->FindByValue(type, field, value, 1).empty();
    };
}

}  // namespace

SourceLoader::SourceLoader(recorddb::Database& database, AdPtr<recorddb::Session> session,
                           const LoadOptions& options, const LoadPolicy& policy, LoadSinks& sinks)
    : m_database(database),
      m_session(session),
      m_options(options),
      m_policy(policy),
      m_sinks(sinks),
      m_missing(database),
      m_unfinished(database.GetJournal()),
      m_importer(session),
      m_group(std::move(session), policy) {
    if (policy.FindsLosses(options)) {
        m_losses.emplace(database.GetSchema(), HasValue(database),
                         [this](const Loss& loss) { m_sinks.Lose(loss); });
    }
}

void SourceLoader::Load(const Source& listed) {
    const SourceFile source(listed.path, listed.name);
    PacketReader reader(source.Read(), ReadingOptions(source));
    RequirePacket(reader, source.Name());
    if (reader.IsConfiguration()) {
        LoadConfiguration(reader, source);
    } else {
        LoadData(reader, source);
    }
    m_bytesBefore += listed.size;
    m_sinks.Advance(m_bytesBefore);
}

ReaderOptions SourceLoader::ReadingOptions(const SourceFile& source) {
    ReaderOptions options;
    options.recordLimit = m_options.limits.size;
    options.maxDepth = m_options.limits.depth;
    options.unseen = [&](const UnseenRecord& unseen) {
        m_sinks.Lose(LossOf(unseen, source.Name()));
    };
    options.frame = [&](const FrameDefect& defect) { m_sinks.Lose(LossOf(defect, source.Name())); };
    return options;
}

void SourceLoader::LoadConfiguration(PacketReader& reader, const SourceFile& source) {
    ImportConfiguration next = m_configuration;
    const std::string packet = reader.ReadConfiguration();
    next.Apply(packet, source.Name());
    const std::string error = m_importer.Configure(next);
    if (const auto& failure = m_session->Failure()) {
        throw *failure;
    }
    if (!error.empty()) {
        throw SourceError(SourceProblem::Refused, source.Name(),
                          fmt::format("{}: {} Its record types are: {}.", source.Name(), error,
                                      NamesOfTypes(m_database.GetSchema())));
    }
    m_configuration = std::move(next);
    m_sinks.Configure(m_configuration);
    if (m_losses) {
        m_losses->Configure(packet, source.Name(), m_configuration);
    } else if (const auto loss = FindNothingImported(source.Name(), 0, m_configuration)) {
        m_sinks.Lose(*loss);
    }
}

void SourceLoader::LoadData(PacketReader& reader, const SourceFile& source) {
    if (m_losses) {
        m_losses->BeginData(source.Name());
    }
    if (!m_configuration.Received() && !m_policy.NeedsConfiguration()) {
        return;
    }
    CheckData(source);
    LoadJournal journal = OpenJournal(source);
    if (journal.NothingToDo()) {
        PassOver(reader, journal);
    } else {
        ImportData(reader, source, journal);
    }
    if (m_losses && !m_stopped) {
        m_losses->EndData();
    }
}

void SourceLoader::ImportData(PacketReader& reader, const SourceFile& source,
                              LoadJournal& journal) {
    m_number = 1;
    try {
        if (m_options.wholePackets) {
            LoadWhole(reader, source, journal);
        } else {
            LoadRecords(reader, source, journal);
        }
    } catch (const SourceError& error) {
        const std::string advice = error.Problem() == SourceProblem::Changed
                                       ? m_policy.AdviseOnChange(journal.HandledForGood())
                                       : "";
        if (!advice.empty()) {
            throw SourceError(SourceProblem::Changed, source.Name(),
                              fmt::format("{}. {}", error.what(), advice));
        }
        throw;
    } catch (const std::bad_alloc&) {
        throw MemoryError(fmt::format(
            "{}: there is not enough memory for record {}; make some free, or reject such records "
            "with a --max-record-size lower than {}, then start the same command again",
            source.Name(), m_number, m_options.limits.size));
    }
}

// Records that an earlier load has dealt with.
void SourceLoader::PassOver(PacketReader& reader, const LoadJournal& journal) {
    m_sinks.AddRead(journal.HandledBefore());
    m_sinks.PassOver(journal.HandledBefore());
    if (m_losses) {
        ExamineRecords(reader);
    }
}

// Reads all records for nothing but what is lost of them and around them.
void SourceLoader::ExamineRecords(PacketReader& reader) {
    SourceRecord record;
    while (!m_stopped && reader.NextRecord(record)) {
        if (m_losses) {
            m_losses->Examine(record);
        }
        m_sinks.Advance(m_bytesBefore + reader.BytesRead());
        m_stopped = MustStop();
    }
}

// Refuses data that cannot be imported at all, which is no fault of its records.
void SourceLoader::CheckData(const SourceFile& source) {
    RequireConfiguration(m_configuration, source.Name());
    if (m_configuration.Data() == ImportedData::Attachments) {
        RequireAttachments(m_options.attachments, source.Name());
    }
}

LoadJournal SourceLoader::OpenJournal(const SourceFile& source) {
    const auto* type = m_database.GetSchema().FindType(m_configuration.RecordType());
    const auto isField = [&](std::string_view name) { return type->FindField(name) != nullptr; };
    const recorddb::journal::JournalKey key{source.Sha256(), m_configuration.Fingerprint(isField)};
    LoadJournal journal(m_database.GetJournal(), key, source.Name(), m_options.fresh,
                        m_options.retryRejected);
    for (const auto& unfinished : m_unfinished.WithOtherContent(key, source.Name())) {
        if (m_options.fresh) {
            journal.AlsoForget(unfinished.key);
        } else if (journal.HandledBefore() == 0 && !journal.WasComplete()) {
            throw SourceError(
                SourceProblem::Changed, source.Name(),
                fmt::format("{}: the file has changed since an earlier load stopped "
                            "in it. {}",
                            source.Name(), AdviseOnChangedSource(unfinished.handled)));
        }
    }
    if (journal.WasComplete()) {
        m_sinks.Say(fmt::format("{}: already loaded ({})", source.Name(),
                                CountOf(journal.HandledBefore(), "record")));
    } else if (journal.HandledBefore() > 0) {
        m_sinks.Say(fmt::format("{}: goes on behind record {}, where an earlier load stopped",
                                source.Name(), journal.HandledBefore()));
    }
    TellOfRejectedBefore(source, journal);
    return journal;
}

void SourceLoader::TellOfRejectedBefore(const SourceFile& source, const LoadJournal& journal) {
    const std::uint64_t records = journal.RejectedBefore();
    if (records == 0) {
        return;
    }
    if (journal.Retries()) {
        m_sinks.Say(fmt::format("{}: tries the rejected ones again ({})", source.Name(), records));
        return;
    }
    m_sinks.LeaveRejected(records);
    m_sinks.Warn(fmt::format(
        "{}: an earlier load rejected {} of it; mend and load what that load left in its "
        "rejects folder, or try again as it is with --retry-rejected",
        source.Name(), CountOf(records, "record")));
}

void SourceLoader::LoadRecords(PacketReader& reader, const SourceFile& source,
                               LoadJournal& journal) {
    SourceRecord record;
    while (!m_stopped && reader.NextRecord(record)) {
        m_sinks.AddRead();
        if (m_losses) {
            m_losses->Examine(record);
        }
        if (journal.TaskOf(record.ordinal) == RecordTask::Pass) {
            m_sinks.PassOver(1);
        } else {
            LoadRecord(record, source, journal);
        }
        m_sinks.Advance(m_bytesBefore + reader.BytesRead());
        m_number = record.ordinal + 2;
        m_stopped = MustStop();
    }
    if (!m_stopped) {
        journal.NoteEnd();
    }
    m_group.Open();
    CommitGroup(source, journal);
}

void SourceLoader::LoadRecord(const SourceRecord& record, const SourceFile& source,
                              LoadJournal& journal) {
    std::string error = record.error;
    if (record.defect != RecordDefect::None ||
        !ImportOne(record.packet, record.ordinal, journal, error)) {
        if (Interrupted() != 0) {
            // It may have failed for that alone. The load that goes on tries it again.
            return;
        }
        Reject(record, source, error);
        journal.NoteRejected(record.ordinal);
    }
    if (m_group.AddRecord()) {
        CommitGroup(source, journal);
    }
}

void SourceLoader::LoadWhole(PacketReader& reader, const SourceFile& source, LoadJournal& journal) {
    // Nothing to do is not the case here: what is there was imported record by record, and the
    // whole packet would import it again.
    if (journal.HandledBefore() > 0) {
        throw SourceError(SourceProblem::Refused, source.Name(),
                          source.Name() +
                              ": an earlier load has imported some of its records one by one; "
                              "finish that without --whole-packets first");
    }
    PacketReader records(source.Read(), ReadingOptions(source));
    ExamineRecords(records);
    if (m_stopped) {
        return;
    }
    const WholePacket whole = reader.ReadWhole();
    SourceRecord record;
    // The rejects file has a declaration of its own.
    record.raw = std::string_view(whole.text).substr(packetDeclaration.size());
    record.line = 1;
    std::string error = whole.error;
    m_sinks.AddRead();
    if (!error.empty() || !ImportOne(whole.text, 0, journal, error)) {
        // Left out of the journal: nothing of the packet is there, and the next load, by records or
        // whole, begins at its front.
        if (Interrupted() == 0) {
            Reject(record, source, error);
            m_sinks.Secure();
        }
        m_group.Commit();
    } else {
        journal.NoteEnd();
        CommitGroup(source, journal);
    }
    m_stopped = MustStop();
}

// Imports one packet; when it fails, nothing of it stays.
bool SourceLoader::ImportOne(std::string_view packet, std::uint64_t ordinal, LoadJournal& journal,
                             std::string& error) {
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
        error = outcome.error;
        return false;
    }
    savepoint->Release();
    const LoadTotals done = TotalsOf(outcome, m_configuration.Data());
    journal.NoteImported(ordinal, done);
    Add(m_uncommitted, done);
    return true;
}

void SourceLoader::Reject(const SourceRecord& record, const SourceFile& source,
                          const std::string& reason) {
    m_group.Open();
    RejectedRecord rejected;
    rejected.source = source.Name();
    rejected.number = record.ordinal + 1;
    rejected.line = record.line;
    const std::string missing = m_missing.Describe(record.raw, m_configuration);
    rejected.reason = missing.empty() ? reason : reason + " " + missing;
    rejected.raw = record.raw;
    rejected.defect = record.defect;
    rejected.openSection = record.openSection;
    rejected.sourceId = FindFieldValue(record.raw, m_configuration.OriginalId()).value_or("");
    m_sinks.Reject(rejected);
    m_missing.NoteRejected(m_configuration, rejected.sourceId,
                           fmt::format("{}, record {}", source.Name(), rejected.number));
}

void SourceLoader::CommitGroup(const SourceFile& source, LoadJournal& journal) {
    source.RequireUnchanged();
    journal.Save();
    m_sinks.Secure();
    m_group.Commit();
    m_sinks.AddImported(std::exchange(m_uncommitted, {}));
}

bool SourceLoader::MustStop() const {
    return Interrupted() ||
           (m_options.maxRejects && m_sinks.Totals().rejected > *m_options.maxRejects);
}

}  // namespace tool
