#include "tool/load/source_journals.h"

#include <fmt/format.h>

#include "tool/io/source_error.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

std::string TextOnChangedMap(const std::string& step, std::uint64_t handled) {
    return fmt::format(
        "{}: the map, or a file that it reads, has changed since an earlier load stopped here, "
        "and makes other records now. {} {} imported before. Give map and files the content that "
        "they had then, and the same command goes on; or make a new database and load everything "
        "into that.",
        step, CountOf(handled, "record"), handled == 1 ? "was" : "were");
}

}  // namespace

LoadJournal SourceJournals::Open(const SourceWalk& walk, RecordGroup& group) {
    const auto* const type = m_database.GetSchema().FindType(walk.Configuration().RecordType());
    const recorddb::journal::JournalKey key = walk.Key(*type);
    LoadJournal journal(m_database.GetJournal(), key, walk.SourceName(), m_options.fresh,
                        m_options.retryRejected);
    RequireSameContent(walk, journal, key);
    // A whole packet is one group, with which the source is taken up or not at all.
    if (!journal.NothingToDo() && !m_options.wholePackets) {
        group.Open();
        journal.Begin();
        group.Commit();
    }
    return journal;
}

void SourceJournals::Tell(const std::string& source, const LoadJournal& journal) {
    TellOfHandled(source, journal);
    TellOfRejected(source, journal);
}

void SourceJournals::RequireSameContent(const SourceWalk& walk, LoadJournal& journal,
                                        const recorddb::journal::JournalKey& key) const {
    if (walk.IsMade()) {
        RequireSameMap(walk.SourceName(), journal);
        return;
    }
    for (const auto& unfinished : m_unfinished.WithOtherContent(key, walk.SourceName())) {
        if (m_options.fresh) {
            journal.AlsoForget(unfinished.key);
        } else if (journal.HandledBefore() == 0 && !journal.WasComplete()) {
            throw SourceChanged(
                fmt::format("{}: the file has changed since an earlier load stopped in it. {}",
                            walk.SourceName(), AdviseOnChangedSource(unfinished.handled)));
        }
    }
}

// A change of the map may show in other records of the step, in another configuration of it, and in
// that the map does not have it any more.
void SourceJournals::RequireSameMap(const std::string& step, LoadJournal& journal) const {
    for (const auto& unfinished : m_unfinished.OfMapBeside(m_options.map, m_madeKeys)) {
        const bool isGone = !m_madeNames.contains(unfinished.name);
        if (!isGone && unfinished.name != step) {
            continue;
        }
        if (m_options.fresh) {
            journal.AlsoForget(unfinished.key);
        } else if (isGone || (journal.HandledBefore() == 0 && !journal.WasComplete())) {
            throw SourceChanged(TextOnChangedMap(unfinished.name, unfinished.handled));
        }
    }
}

void SourceJournals::ExpectMade(const SourceList& sources) {
    if (sources.Sources().empty() || sources.Sources().front().made == nullptr) {
        return;
    }
    SourceWalk walk(sources, {});
    for (WalkStep next = walk.Next(); next != WalkStep::End && next != WalkStep::Stopped;
         next = walk.Next()) {
        const auto* const type = m_database.GetSchema().FindType(walk.Configuration().RecordType());
        if (next == WalkStep::Data && type != nullptr) {
            m_madeKeys.push_back(walk.Key(*type));
            m_madeNames.insert(walk.SourceName());
        }
        walk.LeaveSource();
    }
}

void SourceJournals::TellOfHandled(const std::string& source, const LoadJournal& journal) {
    if (journal.WasComplete()) {
        m_sinks.Say(fmt::format("{}: already loaded ({})", source,
                                CountOf(journal.HandledBefore(), "record")));
    } else if (journal.HandledBefore() > 0) {
        m_sinks.Say(fmt::format("{}: goes on behind record {}, where an earlier load stopped",
                                source, journal.HandledBefore()));
    }
    if (journal.WaitingBefore() > 0) {
        m_sinks.Say(fmt::format("{}: takes up {} that waited there for other records", source,
                                CountOf(journal.WaitingBefore(), "record")));
    }
}

void SourceJournals::TellOfRejected(const std::string& source, const LoadJournal& journal) {
    const std::uint64_t records = journal.RejectedBefore();
    if (records == 0) {
        return;
    }
    if (journal.Retries()) {
        m_sinks.Say(fmt::format("{}: tries the rejected ones again ({})", source, records));
        return;
    }
    m_sinks.LeaveRejected(records);
    m_sinks.Warn(fmt::format(
        "{}: an earlier load rejected {} of it; mend and load what that load left in its "
        "rejects folder, or try again as it is with --retry-rejected",
        source, CountOf(records, "record")));
}

}  // namespace tool
