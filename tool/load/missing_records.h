#ifndef TOOL_LOAD_MISSING_RECORDS_H
#define TOOL_LOAD_MISSING_RECORDS_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Finds out which other records a rejected record waits for: those that it refers to, is a
// duplicate of, or adds history or attachments to, and that are not in the database.
class MissingRecords {
  public:
    // The database outlives the object.
    explicit MissingRecords(recorddb::Database& database);

    // What `record` waits for under `configuration`, as sentences for
    // people, such as "It waits for the user \"ann\" (field owner), which was rejected too:
    // users.xml, record 3."; empty when it waits for nothing. Throws sql::Error.
    std::string Describe(const SourceRecord& record, const ImportConfiguration& configuration);

    // Remembers a rejected record, so that those that wait for it can say where it stands. `place`
    // is for people. Only the first hundred thousand are remembered.
    void NoteRejected(const ImportConfiguration& configuration, const std::string& sourceId,
                      const std::string& place);

    // Forgets the records that were noted since Keep: their rejection has been undone.
    void Undo();
    void Keep() { m_latest.clear(); }

  private:
    struct Wanted {
        const recorddb::schema::RecordType* type;
        std::string field;  // that it is searched by; empty: by its key
        std::string value;
        std::string role;  // why the record waits for it, for people
    };

    std::vector<Wanted> WantedBy(const SourceRecord& record,
                                 const ImportConfiguration& configuration,
                                 const recorddb::schema::RecordType& type) const;
    std::vector<Wanted> References(const SourceRecord& record,
                                   const ImportConfiguration& configuration,
                                   const recorddb::schema::RecordType& type) const;
    bool IsThere(const Wanted& wanted);

    recorddb::Database& m_database;
    recorddb::RecordReader m_reader;
    // By record type and original id.
    using RecordId = std::pair<std::int64_t, std::string>;
    std::map<RecordId, std::string> m_rejected;
    std::vector<RecordId> m_latest;  // since Keep
};

}  // namespace tool

#endif
