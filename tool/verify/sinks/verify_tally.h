#ifndef TOOL_VERIFY_SINKS_VERIFY_TALLY_H
#define TOOL_VERIFY_SINKS_VERIFY_TALLY_H

#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// Counts during a comparison, type by type.
class VerifyTally {
  public:
    // The schema outlives the object.
    explicit VerifyTally(const recorddb::schema::Schema& schema);

    // A record was read from a source.
    void AddRead() { ++m_read; }

    // Adds the numbers of another comparison of the same record types.
    void Add(const VerifyTally& more);

    // The numbers of a type; of no type where it is null.
    VerifiedType& Of(const recorddb::schema::RecordType* type);

    // The sums so far, with the types of which there were records.
    VerifySummary Summary() const;

  private:
    std::uint64_t m_read = 0;
    std::vector<VerifiedType> m_types;  // by id, those of no type first
};

}  // namespace tool

#endif
