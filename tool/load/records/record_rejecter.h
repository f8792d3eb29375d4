#ifndef TOOL_LOAD_RECORDS_RECORD_REJECTER_H
#define TOOL_LOAD_RECORDS_RECORD_REJECTER_H

#include <string>
#include <vector>

#include "recorddb/database.h"
#include "tool/load/records/missing_records.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/sinks/place.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Reports rejected records, with everything that helps to mend them: the original id, and the
// records that they wait for.
class RecordRejecter {
  public:
    // Both outlive the object.
    RecordRejecter(recorddb::Database& database, LoadSinks& sinks)
        : m_missing(database), m_sinks(sinks) {}

    // What a refused record waits for, see MissingRecords::Find. A transaction must be open, since
    // looking for other records may make an index. Throws sql::Error.
    std::vector<WantedRecord> Missing(const SourceRecord& record,
                                      const ImportConfiguration& configuration) {
        return m_missing.Find(record, configuration);
    }

    struct Rejection {
        Place place = 0;
        const ImportConfiguration& configuration;  // that the record was refused under
        bool isInForce = true;                     // with the sinks, too
        std::string reason;
        std::vector<WantedRecord> missing;
    };
    // Throws what the sinks throw.
    void Reject(const SourceRecord& record, const Rejection& rejection);

    // Forgets the records that were rejected since Keep: the group is done again.
    void Undo() { m_missing.Undo(); }
    void Keep() { m_missing.Keep(); }

  private:
    MissingRecords m_missing;
    LoadSinks& m_sinks;
};

}  // namespace tool

#endif
