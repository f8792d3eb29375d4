#ifndef TOOL_VERIFY_COMPARISON_RECORD_COMPARER_H
#define TOOL_VERIFY_COMPARISON_RECORD_COMPARER_H

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/packet/import_configuration.h"
#include "tool/verify/comparison/attachment_files.h"
#include "tool/verify/comparison/difference_reporter.h"
#include "tool/verify/comparison/expected_record.h"
#include "tool/verify/comparison/stored_contents.h"
#include "tool/verify/records/kept_record.h"
#include "tool/verify/records/record_lookup.h"
#include "tool/verify/records/reference_resolver.h"
#include "tool/verify/sinks/difference.h"
#include "tool/verify/sinks/verify_options.h"
#include "tool/verify/sinks/verify_tally.h"

namespace tool {

// A record of the database.
struct RecordNumber {
    std::int64_t type;
    std::int64_t dbid;
};

// Compares records of the database, one after the other, with all that the sources say about each.
// For one thread.
class RecordComparer {
  public:
    // All of them outlive the object; `placeOf` gives the places that the sources' records name.
    RecordComparer(recorddb::Database& database, recorddb::RecordReader& reader,
                   RecordLookup& lookup, const VerifyOptions& options,
                   DifferenceReporter::PlaceOf placeOf);

    // See StoredContents.
    void ContentsAreSound() { m_contents.AreSound(); }

    // Asks for these records of the database together: they are compared next. Throws sql::Error.
    void LookAhead(const std::vector<RecordNumber>& records);

    // Begin, Add for each record of the sources that speaks of this one of the database, in their
    // order, and End, which returns what differs. Throw sql::Error.
    void Begin(std::int64_t type, std::int64_t dbid);
    void Add(const KeptRecord& record, const ImportConfiguration& configuration);
    std::vector<Difference> End();

    // The numbers of the records that were compared since the last call.
    VerifyTally TakeTally() { return std::exchange(m_tally, VerifyTally(m_database.GetSchema())); }

  private:
    recorddb::Database& m_database;
    recorddb::RecordReader& m_reader;
    ReferenceResolver m_resolver;
    StoredContents m_contents;
    AttachmentFiles m_files;
    DifferenceReporter::PlaceOf m_placeOf;
    bool m_exact;
    VerifyTally m_tally;
    // The record that is being compared.
    std::optional<ExpectedRecord> m_expected;
    std::int64_t m_dbid = 0;
    bool m_differs = false;
};

}  // namespace tool

#endif
