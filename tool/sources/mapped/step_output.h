#ifndef TOOL_SOURCES_MAPPED_STEP_OUTPUT_H
#define TOOL_SOURCES_MAPPED_STEP_OUTPUT_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "tool/sources/mapped/key_book.h"
#include "tool/sources/mapped/map_notes.h"
#include "tool/sources/mapped/record_spool.h"
#include "tool/sources/mapped/step_plan.h"

namespace tool {

// What the rows have made of one step: takes its records as they come, finds out which have a key
// that came before, and puts together what belongs to one record.
class StepOutput {
  public:
    // The composed place of a row, for messages.
    using ShowPlace = std::function<std::string(const RowPlace&)>;
    // Whether there is a record with a value in a known field, in the sources or in the database.
    using Exists = std::function<bool(std::size_t known, const std::string& value)>;

    // All of them outlive the object. `number` is that of the step.
    StepOutput(const StepPlan& plan, std::size_t number, KeyBook& keys, MapNotes& notes,
               ShowPlace showPlace);

    // Takes the next record, in the order of the rows.
    void Take(MadeRecord record);

    // After the last record of all sources: gives the records in the order of loading, once.
    std::unique_ptr<RecordSpool> Finish(const Exists& exists);
    // The same of records of which nothing has to be looked up any more.
    std::unique_ptr<RecordSpool> FinishSettled();

  private:
    // A record that is put together, and what its lists hold, where others are added to them.
    struct Joined {
        MadeRecord record;
        std::map<std::string, std::unordered_set<std::string>> known;
    };

    bool Gathers() const;
    void Gather(MadeRecord record);
    void FlushGroup();
    void TakeSingle(MadeRecord record);
    void Add(const MadeRecord& record);
    std::unique_ptr<RecordSpool> Arranged();
    std::unique_ptr<RecordSpool> Settled(const RecordSpool& records, const Exists& exists);
    bool Settle(MadeRecord& record, const Exists& exists);
    bool SettleField(MadeRecord& record, const StepField& field, const Exists& exists);
    static void AddPortions(MadeRecord& record, RecordSpool& spool);
    void Join(Joined& joined, MadeRecord& part);
    void Merge(Joined& joined, MadeRecord& part);

    const StepPlan& m_plan;
    std::size_t m_number;
    KeyBook& m_keys;
    MapNotes& m_notes;
    ShowPlace m_showPlace;
    std::unique_ptr<RecordSpool> m_spool;
    std::uint64_t m_next = 0;           // number of the next record
    std::optional<MadeRecord> m_group;  // rows of one record that follow each other
    bool m_hasParts = false;            // records of one key that do not
};

}  // namespace tool

#endif
