#ifndef TOOL_LOAD_RECORDS_KEPT_RECORDS_H
#define TOOL_LOAD_RECORDS_KEPT_RECORDS_H

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "tool/sources/kind/source_record.h"

namespace tool {

// Copies of records, without their values.
class KeptRecords {
  public:
    void Add(const SourceRecord& record);

    std::size_t Count() const { return m_count; }
    // Valid until the next Add or Clear.
    const SourceRecord& At(std::size_t index) const { return m_records[index].record; }

    void Clear() { m_count = 0; }

  private:
    struct Kept {
        SourceRecord record;
        std::string raw;
        std::vector<RowSpan> rows;
    };

    // Those past m_count are kept to reuse their memory, which is bounded by the size of a group.
    std::deque<Kept> m_records;
    std::size_t m_count = 0;
};

}  // namespace tool

#endif
