#ifndef TOOL_VERIFY_VERIFIER_H
#define TOOL_VERIFY_VERIFIER_H

#include "recorddb/database.h"
#include "recorddb/integrity.h"
#include "recorddb/sql.h"
#include "tool/sources/source_list.h"
#include "tool/verify/comparison/comparison_crew.h"
#include "tool/verify/comparison/record_comparer.h"
#include "tool/verify/records/lookup_tools.h"
#include "tool/verify/records/record_shelf.h"
#include "tool/verify/sinks/verify_options.h"
#include "tool/verify/sinks/verify_sinks.h"
#include "tool/verify/sinks/verify_tally.h"
#include "tool/verify/source_scan.h"

namespace tool {

// Compares sources with a database, as it is at one moment and without writing to it, in memory
// that does not grow with them.
//
// It works in three stages. The first checks whether the database keeps its own rules, whatever the
// sources say. Several records of the sources may speak of one record of the database, so the
// second reads them all and finds that record for each; the third goes through the records of the
// database that were found, works out what each must be, and compares.
class Verifier {
  public:
    // All of them outlive the object. Throws sql::Error.
    Verifier(recorddb::Database& database, const VerifyOptions& options, VerifySinks& sinks);

    // Compares; returns the numbers. Throws SourceError when a source cannot be used, sql::Error
    // when the database fails. Ends early when the process was interrupted; the numbers are then
    // incomplete.
    VerifySummary Run(const SourceList& sources);

  private:
    void CheckDatabase();
    void CompareKept();

    const VerifyOptions& m_options;
    VerifySinks& m_sinks;
    recorddb::Database& m_database;
    ComparisonCrew m_crew;
    recorddb::sql::Transaction m_moment;
    LookupTools m_tools;
    RecordShelf m_shelf;
    VerifyTally m_tally;
    SourceScan m_scan;
    RecordComparer m_comparer;
    recorddb::IntegrityTotals m_integrity;
};

}  // namespace tool

#endif
