#ifndef TESTS_SCRIPTED_SCRIPTED_ACTION_DEF_H
#define TESTS_SCRIPTED_SCRIPTED_ACTION_DEF_H

#include <utility>

#include "platform/core/adentitydef.h"
#include "tests/scripted/scripted_data_object.h"

// An action of a scripted record type.
class ScriptedActionDef : public ScriptedDataObject<AdActionDef> {
  public:
    ScriptedActionDef(ScriptedCore& core, Obx_String name, AdActionType_t type)
        : ScriptedDataObject(core, std::move(name), 1), m_type(type) {}

    AdActionType_t GetType() const override { return m_type; }

  private:
    AdActionType_t m_type;
};

#endif
