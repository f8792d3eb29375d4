#include "tool/load/waiting/waiting_records.h"

#include <algorithm>
#include <utility>

#include "tool/load/records/source_id.h"

namespace tool {

namespace {

using recorddb::schema::FieldKind;

bool RestsOnNumbers(FieldKind kind) {
    return kind == FieldKind::DbId || kind == FieldKind::DisplayId || kind == FieldKind::Reference;
}

// Whether values of that kind depend on dbids. A worker cannot know those of new records, which get
// theirs when its work is taken over.
bool RestsOnNumbers(const WatchedKey& key) {
    if (key.field != nullptr) {
        return RestsOnNumbers(key.field->kind);
    }
    return std::any_of(key.type->key.begin(), key.type->key.end(), [&key](std::size_t part) {
        return RestsOnNumbers(key.type->fields[part].kind);
    });
}

}  // namespace

std::string WaitingRecords::IdKeyOf(const SourceRecord& record,
                                    const ImportConfiguration& configuration) const {
    const auto* const type = m_schema.FindType(configuration.RecordType());
    const auto* const field =
        type == nullptr ? nullptr : type->FindField(configuration.OriginalId());
    const std::string id = field == nullptr ? "" : SourceIdOf(record, configuration);
    return id.empty() ? "" : KeyOfValue(*type, field, id);
}

bool WaitingRecords::IsHeldBack(const SourceRecord& record,
                                const ImportConfiguration& configuration) {
    return !m_room.IsEmpty() &&
           m_room.Bars(IdKeyOf(record, configuration), MayCreate(configuration));
}

WaitingRoom::Wait WaitingRecords::WaitOf(const SourceRecord& record,
                                         const ImportConfiguration& configuration,
                                         const std::vector<WantedRecord>& missing) {
    WaitingRoom::Wait wait;
    wait.id = IdKeyOf(record, configuration);
    wait.mayCreate = MayCreate(configuration);
    for (const WantedRecord& wanted : missing) {
        wait.keys.push_back(wanted.Key());
        Watch({.type = wanted.type, .field = wanted.field});
    }
    std::sort(wait.keys.begin(), wait.keys.end());
    wait.keys.erase(std::unique(wait.keys.begin(), wait.keys.end()), wait.keys.end());
    return wait;
}

void WaitingRecords::Watch(const WatchedKey& key) {
    WatchedKeys keys = m_watched ? *m_watched : WatchedKeys();
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
        keys.push_back(key);
        m_watched = std::make_shared<const WatchedKeys>(std::move(keys));
        m_session->Watch(*key.type, key.field);
    }
}

bool WaitingRecords::AreUnconcernedBy(const Package& package) {
    if (m_room.IsEmpty()) {
        return true;
    }
    const bool creates = std::any_of(package.done.begin(), package.done.end(),
                                     [](const LoadTotals& done) { return done.created > 0; });
    const auto isKnown = [&](const WatchedKey& key) {
        return package.watched &&
               std::find(package.watched->begin(), package.watched->end(), key) !=
                   package.watched->end() &&
               !(creates && RestsOnNumbers(key));
    };
    if (m_room.FirstReady() ||
        (m_watched && !std::all_of(m_watched->begin(), m_watched->end(), isKnown)) ||
        std::any_of(package.written.begin(), package.written.end(),
                    [this](const std::string& key) { return m_room.Wants(key); })) {
        return false;
    }
    for (std::size_t i = 0; i < package.records.Count(); ++i) {
        if (package.isDue[i] && IsHeldBack(package.records.At(i), *package.configuration)) {
            return false;
        }
    }
    return true;
}

void WaitingRecords::PutOff(Place place, const SourceRecord& record,
                            const ImportConfiguration& configuration,
                            const std::vector<WantedRecord>& missing) {
    m_room.Take(place, record, WaitOf(record, configuration, missing));
}

void WaitingRecords::PutOffAgain(Place place, const SourceRecord& record,
                                 const ImportConfiguration& configuration,
                                 const std::vector<WantedRecord>& missing) {
    m_room.WaitOn(place, WaitOf(record, configuration, missing));
}

void WaitingRecords::NoteWritten() {
    if (!m_watched) {
        return;
    }
    for (const recorddb::WrittenValue& value : m_session->TakeWritten()) {
        m_room.Arrive(KeyOfValue(*value.type, value.field, value.text));
    }
    if (m_room.HasBeenEmpty()) {
        m_session->WatchNothing();
        m_watched.reset();
    }
}

void WaitingRecords::DropWritten() {
    if (m_watched) {
        m_session->TakeWritten();
    }
}

}  // namespace tool
