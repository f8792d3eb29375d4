#ifndef TOOL_SOURCES_MAPPED_MAP_RUN_H
#define TOOL_SOURCES_MAPPED_MAP_RUN_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/map/map_file.h"
#include "tool/sources/kind/made_source.h"
#include "tool/sources/kind/map_findings.h"
#include "tool/sources/mapped/address_tally.h"
#include "tool/sources/mapped/key_book.h"
#include "tool/sources/mapped/map_inputs.h"
#include "tool/sources/mapped/map_notes.h"
#include "tool/sources/mapped/row_mapper.h"
#include "tool/sources/mapped/step_output.h"
#include "tool/sources/mapped/step_plan.h"
#include "tool/sources/mapped/step_source.h"
#include "tool/sources/mapped/value_maker.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// Reads the files of a map, each once, and makes sources of records of them: two for each step, its
// configuration and its records. They stand in temporary files, so memory does not grow with them.
class MapRun {
  public:
    struct Options {
        RowLimits limits;
        bool keepsRows = false;  // the texts of rows, to be had from Rows
        int standardInput = 0;   // the descriptor that "-" reads; stays the caller's
        // Whether the database has a record of a type with a value in a field.
        std::function<bool(const recorddb::schema::RecordType&, const recorddb::schema::Field&,
                           const std::string&)>
            exists;
    };

    // `map`, which fits `schema`, and both of them outlive the object.
    MapRun(const MapFile& map, const recorddb::schema::Schema& schema, MapInputs inputs,
           Options options);
    ~MapRun();

    // Reads everything. False when the process was interrupted. Throws SourceError when a file
    // cannot be used as a whole, std::runtime_error when a temporary file fails.
    bool Run();

    // The sources, in the order of loading; each lasts without this object.
    const std::vector<std::shared_ptr<const MadeSource>>& Sources() const { return m_sources; }

    // The texts of the rows; null where they are not kept.
    const std::shared_ptr<KeptRows>& Rows() const { return m_rows; }

    // What there is to tell.
    MapFindings Findings() const;

  private:
    void ReadSource(std::size_t source);
    void ReadInput(const MapInput& input, RowMapper& mapper);
    void KnowAddresses(std::size_t source);
    void AddSources();
    std::size_t LastOfAttachments(std::size_t step) const;
    void GatherAttachments(std::vector<std::unique_ptr<RecordSpool>>& records);
    std::string ShowPlace(const RowPlace& place) const;
    std::string CurrentPlace() const;
    void AddTallyFindings(std::size_t source, MapFindings& findings) const;
    void AddNoteFindings(MapFindings& findings) const;

    const MapFile& m_map;
    const recorddb::schema::Schema& m_schema;
    MapInputs m_inputs;
    Options m_options;
    MapPlan m_plan;
    std::shared_ptr<std::vector<ReadFile>> m_files;
    std::shared_ptr<KeptRows> m_rows;
    MapNotes m_notes;
    ValueMaker m_values;
    KeyBook m_keys;
    std::vector<std::unique_ptr<StepOutput>> m_outputs;    // of the steps
    std::vector<std::unique_ptr<AddressTally>> m_tallies;  // of the sources
    const RowMapper* m_mapper = nullptr;                   // of the source that is read
    std::vector<std::shared_ptr<const MadeSource>> m_sources;
};

}  // namespace tool

#endif
