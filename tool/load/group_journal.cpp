#include "tool/load/group_journal.h"

#include <utility>

namespace tool {

GroupJournal::GroupJournal(RecordGroup& group, LoadSinks& sinks, WaitingRoom& room)
    : m_group(group), m_sinks(sinks), m_room(room) {}

void GroupJournal::BeginSource(LoadJournal journal, const SourceWalk& walk) {
    m_walk = &walk;
    ++m_number;
    m_sources.try_emplace(m_number, std::move(journal), walk);
}

void GroupJournal::EndSource() {
    m_walk = nullptr;
    ForgetFinished();
}

const LoadJournal* GroupJournal::Find(const recorddb::journal::JournalKey& key) const {
    for (const auto& [number, source] : m_sources) {
        const recorddb::journal::JournalKey& other = source.journal.Key();
        if (other.sourceSha256 == key.sourceSha256 &&
            other.configurationSha256 == key.configurationSha256) {
            return &source.journal;
        }
    }
    return nullptr;
}

LoadedSource& GroupJournal::Touched(Place place) {
    LoadedSource& source = SourceAt(place);
    source.isTouched = true;
    return source;
}

void GroupJournal::NoteImported(Place place, const LoadTotals& done) {
    LoadedSource& source = Touched(place);
    source.journal.NoteImported(OrdinalOf(place), done);
    Add(source.uncommitted, done);
}

void GroupJournal::NoteRejected(Place place) {
    Touched(place).journal.NoteRejected(OrdinalOf(place));
}

void GroupJournal::NoteWaiting(Place place, bool isTakenUp) {
    LoadedSource& source = Touched(place);
    if (!isTakenUp) {
        source.journal.NoteWaiting(OrdinalOf(place));
    }
    ++source.waiting;
    ++source.uncommitted.waited;
}

void GroupJournal::NoteWaitingEnds(Place place) {
    LoadedSource& source = Touched(place);
    source.journal.NoteWaitingEnds(OrdinalOf(place));
    --source.waiting;
}

void GroupJournal::Commit(NewsTime last) {
    m_group.Open();
    if (m_walk != nullptr) {
        m_walk->RequireUnchanged();
        Current().isTouched = true;
    }
    m_group.Apply();
    for (auto& [number, source] : m_sources) {
        if (source.isTouched) {
            source.journal.Save();
        }
    }
    m_sinks.TellHeld(last);
    m_sinks.Secure();
    m_group.Commit();
    Keep();
}

void GroupJournal::Keep() {
    m_room.Keep();
    m_sinks.Keep();
    for (auto& [number, source] : m_sources) {
        if (std::exchange(source.isTouched, false)) {
            source.journal.Keep();
            source.keptWaiting = source.waiting;
            const bool isInForce = m_walk != nullptr && number == m_number;
            m_sinks.AddImported(std::exchange(source.uncommitted, {}),
                                isInForce ? nullptr : &source.configuration);
        }
    }
    ForgetFinished();
}

// A source need not be known any more when nothing of it is read and none of its records waits.
void GroupJournal::ForgetFinished() {
    std::erase_if(m_sources, [this](const auto& source) {
        return source.second.waiting == 0 && (m_walk == nullptr || source.first != m_number);
    });
}

void GroupJournal::Undo() {
    m_group.Undo();
    m_room.Undo();
    for (auto& [number, source] : m_sources) {
        source.journal.Undo();
        source.waiting = source.keptWaiting;
        source.uncommitted = {};
        source.isTouched = false;
    }
    m_sinks.TakeBackRejects();
}

// All that a group notes is kept or undone together, so one journal that it has changed tells. All
// of them are taken up again, since an orphaned connection may still have any of them in hand.
bool GroupJournal::TakeUpAgain() {
    m_group.Undo();
    m_group.Open();
    bool isKept = false;
    for (auto& [number, source] : m_sources) {
        const bool tells = source.journal.HasSaved();
        const LoadJournal::Outcome outcome = source.journal.BeginAgain();
        isKept = isKept || (tells && outcome == LoadJournal::Outcome::Kept);
    }
    m_group.Commit();
    if (isKept) {
        Keep();
        return true;
    }
    Undo();
    return false;
}

}  // namespace tool
