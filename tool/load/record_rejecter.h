#ifndef TOOL_LOAD_RECORD_REJECTER_H
#define TOOL_LOAD_RECORD_REJECTER_H

#include <string>

#include "recorddb/database.h"
#include "tool/load/load_sinks.h"
#include "tool/load/missing_records.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Reports rejected records, with everything that helps to mend them: the original id, and the
// records that they wait for.
class RecordRejecter {
  public:
    // Both outlive the object.
    RecordRejecter(recorddb::Database& database, LoadSinks& sinks)
        : m_missing(database), m_sinks(sinks) {}

    // Rejects `record` of the source that `walk` stands in, for `reason`. A transaction must be
    // open, since looking for other records may make an index. Throws sql::Error, and what the
    // sinks throw.
    void Reject(const SourceRecord& record, const SourceWalk& walk, const std::string& reason);

    // Forgets the records that were rejected since Keep: the group is done again.
    void Undo() { m_missing.Undo(); }
    void Keep() { m_missing.Keep(); }

  private:
    MissingRecords m_missing;
    LoadSinks& m_sinks;
};

}  // namespace tool

#endif
