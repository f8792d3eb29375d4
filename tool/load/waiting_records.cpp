#include "tool/load/waiting_records.h"

#include <algorithm>

#include "tool/load/source_id.h"

namespace tool {

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
        m_session->Watch(*wanted.type, wanted.field);
        m_isWatching = true;
    }
    std::sort(wait.keys.begin(), wait.keys.end());
    wait.keys.erase(std::unique(wait.keys.begin(), wait.keys.end()), wait.keys.end());
    return wait;
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
    if (!m_isWatching) {
        return;
    }
    for (const recorddb::WrittenValue& value : m_session->TakeWritten()) {
        m_room.Arrive(KeyOfValue(*value.type, value.field, value.text));
    }
    if (m_room.HasBeenEmpty()) {
        m_session->WatchNothing();
        m_isWatching = false;
    }
}

void WaitingRecords::DropWritten() {
    if (m_isWatching) {
        m_session->TakeWritten();
    }
}

}  // namespace tool
