#include "tool/load/group_journal.h"

#include <utility>

namespace tool {

GroupJournal::GroupJournal(LoadJournal journal, const SourceWalk& walk, RecordGroup& group,
                           LoadSinks& sinks)
    : m_journal(std::move(journal)), m_walk(walk), m_group(group), m_sinks(sinks) {}

void GroupJournal::NoteImported(std::uint64_t ordinal, const LoadTotals& done) {
    m_journal.NoteImported(ordinal, done);
    Add(m_uncommitted, done);
}

void GroupJournal::Commit() {
    m_group.Open();
    m_walk.RequireUnchanged();
    m_group.Apply();
    m_journal.Save();
    m_sinks.TellHeld();
    m_sinks.Secure();
    m_group.Commit();
    Keep();
}

void GroupJournal::Keep() {
    m_journal.Keep();
    m_sinks.Keep();
    m_sinks.AddImported(std::exchange(m_uncommitted, {}));
}

void GroupJournal::Undo() {
    m_group.Undo();
    m_journal.Undo();
    m_uncommitted = {};
    m_sinks.TakeBackRejects();
}

bool GroupJournal::TakeUpAgain() {
    m_group.Undo();
    m_group.Open();
    const LoadJournal::Outcome outcome = m_journal.BeginAgain();
    m_group.Commit();
    if (outcome == LoadJournal::Outcome::Kept) {
        Keep();
        return true;
    }
    Undo();
    return false;
}

}  // namespace tool
