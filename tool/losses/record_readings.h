#ifndef TOOL_LOSSES_RECORD_READINGS_H
#define TOOL_LOSSES_RECORD_READINGS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/packet/importer_fields.h"
#include "tool/packet/record_elements.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// The two readings of one record, as XML says and as the importer has it, and which field of the
// one is which of the other. Indexes are those of Parts and Fields.
class RecordReadings {
  public:
    struct Overwritten {
        std::size_t part;
        std::size_t field;  // has the value of a later part
    };

    // Returns why the importer cannot read `record`, for people: it has a defect or is not
    // well-formed. Empty when it can; what was read then lasts until the next call, and no longer
    // than `record`.
    std::string Read(const SourceRecord& record);

    const RecordElements& Elements() const { return m_elements; }
    const ImporterFields& Fields() const { return m_fields; }

    // The part that a field has its value from.
    const RecordPart& PartOf(std::size_t field) const { return m_elements.Part(m_partOf[field]); }

    // Parts that another one of exactly the same name follows, in order.
    const std::vector<Overwritten>& OverwrittenParts() const { return m_overwritten; }

    // The fields whose names differ in case only, in the importer's order, group by group.
    const std::vector<std::vector<std::size_t>>& Spellings() const { return m_spellings; }

  private:
    bool TakePlainRecord(std::string_view record);
    bool HasOnlyPacketEscapes(std::string_view record);
    bool StartsWithEscape(std::string_view text);
    bool HasRepeatedName() const;
    void SortNames();
    void MatchParts();
    void GroupSpellings();
    std::size_t FieldOf(const RecordPart& part, std::size_t expected) const;

    RecordElements m_elements;
    ImporterFieldReader m_reader;
    ImporterFields m_fields;
    std::vector<std::string> m_escapes;  // of the packet format, as far as they have occurred
    std::vector<std::size_t> m_byName;   // the fields in the order of their names
    std::vector<std::size_t> m_partOf;
    std::vector<Overwritten> m_overwritten;
    std::vector<std::vector<std::size_t>> m_spellings;
};

}  // namespace tool

#endif
