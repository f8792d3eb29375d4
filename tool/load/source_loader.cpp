#include "tool/load/source_loader.h"

#include <fmt/format.h>

#include <cstdint>
#include <new>
#include <utility>

#include "tool/io/source_error.h"
#include "tool/load/data_loader.h"
#include "tool/load/records/existing_values.h"
#include "tool/losses/loss_finder.h"
#include "tool/losses/nothing_imported.h"
#include "tool/process/memory_watch.h"
#include "tool/sources/source_checks.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

std::unique_ptr<LossSearch> SearchFor(bool losses, recorddb::Database& database, LossTaker take) {
    if (losses) {
        return std::make_unique<LossFinder>(database.GetSchema(), ExistingIn(database),
                                            std::move(take));
    }
    return std::make_unique<NothingImportedSearch>(std::move(take));
}

std::unique_ptr<Crew> CrewFor(const LoadOptions& options, const LoadPolicy& policy,
                              const RecordGroup& group) {
    const bool isOfUse = options.workers > 1 && group.IsGathered();
    return isOfUse ? std::make_unique<Crew>(options, policy) : nullptr;
}

}  // namespace

SourceLoader::SourceLoader(recorddb::Database& database, AdPtr<recorddb::Session> session,
                           const LoadOptions& options, const LoadPolicy& policy, LoadSinks& sinks)
    : m_database(database),
      m_session(session),
      m_options(options),
      m_policy(policy),
      m_sinks(sinks),
      m_losses(SearchFor(policy.FindsLosses(options), database,
                         [&sinks](const Loss& loss) { sinks.Lose(loss); })),
      m_journals(database, options, sinks),
      m_importer(session),
      m_group(session, policy, policy.WritingFor(options), options.groupRecords),
      m_crew(CrewFor(options, policy, m_group)),
      m_recovery(database, options, policy, sinks),
      m_import(session, m_importer, m_group),
      m_rejecter(database, sinks),
      m_journal(m_group, sinks, m_room),
      m_loader({options, sinks, database.GetSchema(), m_import, m_rejecter, m_group, m_recovery,
                m_room, m_journal, m_crew != nullptr},
               session) {
    if (m_crew) {
        m_sinks.SetWorkers(m_crew->Workers());
        if (!m_group.IsPermanent()) {
            m_session->RememberAllWrites();
        }
    }
}

bool SourceLoader::Load(const SourceList& sources) {
    WalkOptions reading;
    reading.limits = m_options.limits;
    reading.attachments = m_options.attachments;
    reading.unseen = [this](const UnseenRecord& unseen, const std::string& source) {
        m_sinks.Lose(LossOf(unseen, source));
    };
    reading.frame = [this](const FrameDefect& defect, const std::string& source) {
        m_sinks.Lose(LossOf(defect, source));
    };
    m_journals.ExpectMade(sources);
    SourceWalk walk(sources, std::move(reading));
    bool goesOn = true;
    WalkStep step = WalkStep::End;
    while (goesOn && (step = walk.Next()) != WalkStep::End) {
        if (step == WalkStep::Configuration) {
            Configure(walk);
        } else if (step == WalkStep::Data) {
            goesOn = LoadData(walk);
            walk.LeaveSource();
        } else {
            return false;
        }
        m_sinks.Advance(walk.BytesRead());
    }
    return goesOn && m_loader.EndWaiting([&] { m_sinks.Advance(walk.BytesRead()); });
}

void SourceLoader::Configure(const SourceWalk& walk) {
    const ImportConfiguration& configuration = walk.Configuration();
    const std::string error = m_importer.Configure(configuration);
    if (const auto& failure = m_session->Failure()) {
        throw *failure;
    }
    if (!error.empty()) {
        throw SourceError(fmt::format("{}: {} Its record types are: {}.", walk.SourceName(), error,
                                      NamesOfTypes(m_database.GetSchema())));
    }
    m_sinks.Configure(configuration);
    m_losses->Configure(walk.ConfigurationPacket(), walk.SourceName(), configuration);
}

bool SourceLoader::LoadData(SourceWalk& walk) {
    m_losses->BeginData(walk.SourceName());
    if (!walk.Configuration().Received() && !m_policy.NeedsConfiguration()) {
        return true;
    }
    walk.RequireUsableData();
    m_importer.SetGuarded(walk.IsGuarded());
    const bool goesOn = ImportData(walk);
    if (goesOn) {
        m_losses->EndData();
    }
    return goesOn;
}

// Makes the indexes that the import of the source's records searches by. In its first group they
// would keep other writers waiting for longer, and be undone with it. A rehearsal is a single
// group, in which they are made when they are needed.
void SourceLoader::MakeIndexes(const ImportConfiguration& configuration) {
    if (!m_policy.KeepsGroups()) {
        return;
    }
    for (const auto& [type, field] : FieldsSearchedBy(configuration, m_database.GetSchema())) {
        m_database.EnsureSearchIndex(*type, *field);
    }
}

// The connection may have been lost since the last source, while this one was read for the first
// time.
LoadJournal SourceLoader::OpenJournal(const SourceWalk& walk) {
    for (int failures = 1;; ++failures) {
        try {
            MakeIndexes(walk.Configuration());
            return m_journals.Open(walk, m_group);
        } catch (const recorddb::sql::Error& error) {
            if (!m_recovery.MayPass(error, failures)) {
                throw;
            }
            m_group.Undo();
            m_recovery.GetReady(error, failures);
        }
    }
}

// The journal of a source with the same content that this load has read already, and of which
// records wait; null when there is none.
const LoadJournal* SourceLoader::FindUnderWay(const SourceWalk& walk) const {
    const auto* const type = m_database.GetSchema().FindType(walk.Configuration().RecordType());
    return type == nullptr ? nullptr : m_journal.Find(walk.Key(*type));
}

bool SourceLoader::ImportData(SourceWalk& walk) {
    const DataLoader::Parts parts = {
        m_options,
        m_sinks,
        *m_losses,
        m_loader,
        m_journal,
        m_rejecter,
        m_group,
        m_database.GetSchema(),
        m_options.looksAhead || m_database.GetConnection().ReadsManyForLess(),
        m_crew.get()};
    if (const LoadJournal* const underWay = FindUnderWay(walk)) {
        const std::uint64_t records = underWay->HandledForGood();
        m_sinks.Say(fmt::format("{}: read before, and some of its records wait ({})",
                                walk.SourceName(), CountOf(records, "record")));
        return DataLoader(walk, parts).PassOver(records);
    }
    const bool keepsTurn = m_crew != nullptr && m_group.IsPermanent();
    if (keepsTurn) {
        // Before the source is taken up, which is the first turn that is kept.
        m_session->RememberWrites(m_crew->Transactions());
    }
    LoadJournal opened = OpenJournal(walk);
    m_journals.Tell(walk.SourceName(), opened);
    m_journal.BeginSource(std::move(opened), walk);
    DataLoader loader(walk, parts);
    bool goesOn = false;
    try {
        const LoadJournal& journal = m_journal.Journal();
        goesOn = journal.NothingToDo() ? loader.PassOver(journal.HandledBefore()) : loader.Load();
    } catch (const SourceChanged& error) {
        const std::string advice = m_policy.AdviseOnChange(m_journal.Journal().HandledForGood());
        if (advice.empty()) {
            throw;
        }
        throw SourceChanged(fmt::format("{}. {}", error.what(), advice));
    } catch (const std::bad_alloc&) {
        throw MemoryError(fmt::format(
            "{}: there is not enough memory for record {}; make some free, or reject such records "
            "with a --max-record-size lower than {}, then start the same command again",
            walk.SourceName(), loader.Number(), m_options.limits.size));
    }
    if (keepsTurn) {
        m_session->RememberWrites(0);
    }
    m_journal.EndSource();
    return goesOn;
}

}  // namespace tool
