#ifndef TESTS_SCRIPTED_SCRIPTED_RESULT_SET_H
#define TESTS_SCRIPTED_SCRIPTED_RESULT_SET_H

#include <cstddef>
#include <string>

#include "platform/core/adquery.h"
#include "tests/scripted/scripted_core.h"

// What a query on a scripted core finds.
class ScriptedResultSet : public AdResultSet {
  public:
    ScriptedResultSet(ScriptedCore& core, std::string label, ScriptedMatches found);

    // The query's condition ("source_id = core-1").
    const std::string& Label() const { return m_label; }

    void SetRowLimit(long rows) override;
    void Prepare() override;
    void Execute() override;
    // The log shows the status that the caller passed in.
    void FetchNext(int& status) override;
    long GetRowCount() override;
    void GetColumn(int column, Obx_String& value, int reserved) override;

  protected:
    ~ScriptedResultSet() override;

  private:
    ScriptedCore& m_core;
    std::string m_label;
    ScriptedMatches m_found;
    std::size_t m_rowsFetched = 0;
};

#endif
