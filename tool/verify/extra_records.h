#ifndef TOOL_VERIFY_EXTRA_RECORDS_H
#define TOOL_VERIFY_EXTRA_RECORDS_H

#include <cstdint>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/verify/verify_sink.h"
#include "tool/verify/verify_tally.h"

namespace tool {

// Finds the records of the database that no source speaks of, on a walk through all records beside
// those that the sources speak of. Operations throw sql::Error.
class ExtraRecords {
  public:
    // All of them outlive the object.
    ExtraRecords(const recorddb::schema::Schema& schema, recorddb::RecordReader& reader,
                 VerifyTally& tally, VerifySink& sink)
        : m_schema(schema), m_reader(reader), m_tally(tally), m_sink(sink) {}

    // The sources speak of this record. To be called by rising type and dbid; reports the records
    // that were passed over before it.
    void Pass(std::int64_t type, std::int64_t dbid);

    // They speak of no further one.
    void PassRest();

  private:
    void TellUpTo(std::int64_t dbid);

    const recorddb::schema::Schema& m_schema;
    recorddb::RecordReader& m_reader;
    VerifyTally& m_tally;
    VerifySink& m_sink;
    std::int64_t m_type = 1;   // that the walk has come to
    std::int64_t m_after = 0;  // its records up to this dbid have been seen
};

}  // namespace tool

#endif
