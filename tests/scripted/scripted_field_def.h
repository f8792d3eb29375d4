#ifndef TESTS_SCRIPTED_SCRIPTED_FIELD_DEF_H
#define TESTS_SCRIPTED_SCRIPTED_FIELD_DEF_H

#include "platform/core/adentitydef.h"
#include "tests/scripted/scripted_data_object.h"

class ScriptedEntityDef;

// A field of a scripted record type.
class ScriptedFieldDef : public ScriptedDataObject<AdFieldDef> {
  public:
    // `type` is an ad_field_type; `target` the record type that a reference points at, or null.
    ScriptedFieldDef(ScriptedCore& core, Obx_String name, long dbId, int type,
                     ScriptedEntityDef* target);

    int Type() const { return m_type; }
    ScriptedEntityDef* Target() const { return m_target; }

    AdEntityDef* GetReferenceEntityDef() const override;

  private:
    int m_type;
    ScriptedEntityDef* m_target;
};

#endif
