#ifndef TOOL_VERIFY_COMPARISON_EXTRA_RECORDS_H
#define TOOL_VERIFY_COMPARISON_EXTRA_RECORDS_H

#include <cstdint>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/verify/sinks/verify_sink.h"
#include "tool/verify/sinks/verify_tally.h"

namespace tool {

// Finds the records of the database that no source speaks of, by walking through all of them and
// comparing with those that the sources speak of. Operations throw sql::Error.
class ExtraRecords {
  public:
    // All of them outlive the object.
    ExtraRecords(const recorddb::schema::Schema& schema, recorddb::RecordReader& reader,
                 VerifyTally& tally, VerifySink& sink)
        : m_schema(schema), m_reader(reader), m_tally(tally), m_sink(sink) {}

    // Notes that the sources speak of this record, and reports the records between the one before
    // and this one. To be called in the order of type and dbid.
    void Pass(std::int64_t type, std::int64_t dbid);

    // Reports the records after the last one. To be called once, at the end.
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
