#ifndef TOOL_LOAD_WAITING_WAITING_RECORDS_H
#define TOOL_LOAD_WAITING_WAITING_RECORDS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/session.h"
#include "tool/load/records/missing_records.h"
#include "tool/load/records/watched_keys.h"
#include "tool/load/sinks/place.h"
#include "tool/load/waiting/waiting_room.h"
#include "tool/load/workers/package.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Which records of a load wait, and for what, in terms of records: puts them into the waiting room
// and learns from the session which keys have come.
class WaitingRecords {
  public:
    // All of them outlive the object.
    WaitingRecords(WaitingRoom& room, const recorddb::schema::Schema& schema,
                   AdPtr<recorddb::Session> session)
        : m_room(room), m_schema(schema), m_session(std::move(session)) {}

    // Whether a record has to wait because an earlier one of its id does.
    bool IsHeldBack(const SourceRecord& record, const ImportConfiguration& configuration);

    // Whether nothing that waits has to do with records that were done ahead: none of these has to
    // wait behind it, and none brings what it waits for.
    bool AreUnconcernedBy(const Package& package);

    // What records wait for, by kinds; null when none waits.
    const std::shared_ptr<const WatchedKeys>& Watched() const { return m_watched; }

    // Puts a record off, which lacks `missing`, or with none waits for earlier ones of its id. It
    // is ready when there are none either.
    void PutOff(Place place, const SourceRecord& record, const ImportConfiguration& configuration,
                const std::vector<WantedRecord>& missing);
    // A record that was ready, and tried, lacks `missing`.
    void PutOffAgain(Place place, const SourceRecord& record,
                     const ImportConfiguration& configuration,
                     const std::vector<WantedRecord>& missing);

    // Notes what records wrote since the last call, once that is a part of the group: whatever has
    // waited for nothing else is ready now.
    void NoteWritten();
    // Forgets what records wrote since the last call: it was undone.
    void DropWritten();

  private:
    std::string IdKeyOf(const SourceRecord& record, const ImportConfiguration& configuration) const;
    WaitingRoom::Wait WaitOf(const SourceRecord& record, const ImportConfiguration& configuration,
                             const std::vector<WantedRecord>& missing);
    void Watch(const WatchedKey& key);

    WaitingRoom& m_room;
    const recorddb::schema::Schema& m_schema;
    AdPtr<recorddb::Session> m_session;
    std::shared_ptr<const WatchedKeys> m_watched;
};

}  // namespace tool

#endif
