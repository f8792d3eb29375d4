#ifndef TOOL_SOURCES_MAPPED_ROW_MAPPER_H
#define TOOL_SOURCES_MAPPED_ROW_MAPPER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tool/map/map_file.h"
#include "tool/sources/kind/kept_rows.h"
#include "tool/sources/mapped/address_tally.h"
#include "tool/sources/mapped/map_notes.h"
#include "tool/sources/mapped/step_output.h"
#include "tool/sources/mapped/step_plan.h"
#include "tool/sources/mapped/value_maker.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// Takes the rows of the files of one source, and makes what its steps say of each.
class RowMapper final : public RowHandler {
  public:
    struct Step {
        const StepPlan* plan = nullptr;
        StepOutput* output = nullptr;
    };
    struct Parts {
        const MapFile& map;
        const MapSource& source;
        std::vector<Step> steps;
        ValueMaker& values;
        MapNotes& notes;
        KeyBook& keys;
        AddressTally& tally;
        KeptRows* rows;  // null: texts are not kept
    };

    explicit RowMapper(Parts parts);

    // The next rows come from this file.
    void BeginFile(std::uint32_t file, const std::string& name);

    // Throws SourceError when a column that the map reads is not there.
    void TakeHeader(const std::vector<std::string>& columns) override;
    bool TakeRow(Row& row) override;
    void TakeOutside(const std::string& address, std::uint64_t line) override;

    // The place of the current row.
    const RowPlace& Place() const { return m_place; }

  private:
    void KeepHeader(const std::vector<std::string>& columns) const;
    void KeepText(const Row& row);
    void RequireColumn(const MapAddress& address, const std::vector<std::string>& columns) const;
    void RunStep(const Step& step, const Row& row);
    void RunItems(const Step& step, const MapEach& each, const Row& row);
    void MakeRecord(const Step& step, const RowItem& item);
    bool MakeFields(const Step& step, const RowItem& item, MadeRecord& record);
    static void PutValue(const Step& step, const StepField& field, MadeValue& value,
                         MadeRecord& record);
    static void RequireParts(const Step& step, MadeRecord& record);
    static bool IsItem(const RowItem& item, const std::vector<std::string>& nullIf);
    void NoteKnown(const Step& step, const MadeRecord& record);

    Parts m_parts;
    RowPlace m_place;
    std::vector<RowSpan> m_rows;  // the current one, where texts are kept
    std::string m_fileName;
};

// Calls `take` with each address that a step reads.
void ForEachAddress(const MapStep& step, const std::function<void(const MapAddress&)>& take);

}  // namespace tool

#endif
