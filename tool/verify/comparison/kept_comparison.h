#ifndef TOOL_VERIFY_COMPARISON_KEPT_COMPARISON_H
#define TOOL_VERIFY_COMPARISON_KEPT_COMPARISON_H

#include <cstdint>
#include <memory>

#include "tool/verify/comparison/comparison_crew.h"
#include "tool/verify/comparison/extra_records.h"
#include "tool/verify/comparison/kept_package.h"
#include "tool/verify/comparison/record_comparer.h"
#include "tool/verify/records/record_shelf.h"
#include "tool/verify/sinks/verify_sinks.h"
#include "tool/verify/sinks/verify_tally.h"

namespace tool {

// The stage of a comparison that goes through the records of the database that the sources speak
// of, in the order of type and dbid. What it tells does not depend on the crew, which may compare
// some of them ahead of their turn.
class KeptComparison {
  public:
    // All of it outlives the object.
    struct Parts {
        RecordShelf& shelf;
        ConfigurationOf configuration;
        RecordComparer& comparer;
        ComparisonCrew& crew;
        ExtraRecords* extra;  // null: records that the sources do not speak of are not looked for
        VerifyTally& tally;
        VerifySinks& sinks;
    };

    explicit KeptComparison(Parts parts) : m_parts(std::move(parts)) {}

    // Ends early when the process was interrupted. Throws sql::Error, and what the sinks throw.
    void Run();

  private:
    void Fill(KeptPackage& package);
    void Settle(KeptPackage& package);
    void AddRest(RecordComparer& comparer);
    void Tell(const KeptPackage& package);

    Parts m_parts;
    KeptRecord m_record;  // that comes next
    bool m_hasNext = false;
    std::uint64_t m_rest = 0;  // records that AddRest has added, not yet in m_done
    std::uint64_t m_done = 0;
};

}  // namespace tool

#endif
