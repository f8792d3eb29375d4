#ifndef TOOL_LOAD_WAITING_WAITING_RECORD_H
#define TOOL_LOAD_WAITING_WAITING_RECORD_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tool/sources/kind/source_record.h"

namespace tool {

// A record that was read earlier, with all that it refers to.
class WaitingRecord {
  public:
    WaitingRecord() = default;
    WaitingRecord(const WaitingRecord&) = delete;
    WaitingRecord& operator=(const WaitingRecord&) = delete;

    // Valid until the next Read.
    const SourceRecord& Record() const { return m_record; }

    // Replaces the record by one that Append wrote.
    void Read(std::span<const std::byte> bytes);

    // Appends all of a record that its import and its rejection need.
    static void Append(const SourceRecord& record, std::string& bytes);

  private:
    SourceRecord m_record;
    std::string m_raw;
    std::string m_source;
    std::string m_unit;
    std::vector<RowSpan> m_rows;
};

}  // namespace tool

#endif
