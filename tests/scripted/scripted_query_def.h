#ifndef TESTS_SCRIPTED_SCRIPTED_QUERY_DEF_H
#define TESTS_SCRIPTED_SCRIPTED_QUERY_DEF_H

#include <string>

#include "platform/core/adquery.h"

class ScriptedCore;
struct ScriptedMatches;

// A query on a scripted core, which knows one condition.
class ScriptedQueryDef : public AdQueryDef {
  public:
    ScriptedQueryDef(ScriptedCore& core, Obx_String recordType);

    // The condition ("source_id = core-1"), as calls that take a query or result set show it.
    std::string Label() const;
    const ScriptedMatches& Found() const;

    void SelectField(int column, const Obx_String& fieldPath) override;
    void SelectDbId(int column) override;
    AdFilterNode* BuildFilter(AdFilterNode* parent, const Obx_String& fieldName,
                              AdCompOp_t operation, const Obx_String& value, int reserved) override;

  protected:
    ~ScriptedQueryDef() override;

  private:
    ScriptedCore& m_core;
    Obx_String m_recordType;
    Obx_String m_field;
    Obx_String m_value;
    AdFilterNode m_node;
};

#endif
