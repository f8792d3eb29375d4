#include "tests/scripted/scripted_field_def.h"

#include "tests/scripted/scripted_core.h"

ScriptedFieldDef::ScriptedFieldDef(ScriptedCore& core, Obx_String name, long dbId, int type,
                                   ScriptedEntityDef* target)
    : ScriptedDataObject(core, std::move(name), dbId), m_type(type), m_target(target) {}

AdEntityDef* ScriptedFieldDef::GetReferenceEntityDef() const {
    Asked(Core(), "GetReferenceEntityDef");
    return m_target;
}
