#ifndef TESTS_SCRIPTED_SCRIPTED_ENTITY_DEF_H
#define TESTS_SCRIPTED_SCRIPTED_ENTITY_DEF_H

#include <initializer_list>
#include <list>
#include <memory>
#include <vector>

#include "platform/core/adentitydef.h"
#include "tests/scripted/call_argument.h"
#include "tests/scripted/scripted_action_def.h"
#include "tests/scripted/scripted_answers.h"
#include "tests/scripted/scripted_data_object.h"
#include "tests/scripted/scripted_field_def.h"

// A record type of a scripted core. Its lines in the log begin with its name ("bug.GetType()").
// Made by ScriptedCore::AddRecordType: without states, with the field dbid as its only field and
// key, and with an action "duplicate".
class ScriptedEntityDef : public ScriptedDataObject<AdEntityDef> {
  public:
    ScriptedEntityDef(ScriptedCore& core, Obx_String name, long dbId);

    // Sentences that describe the type.
    ScriptedEntityDef& States(const Obx_String& stateField);
    ScriptedEntityDef& Field(const Obx_String& name, int type);
    ScriptedEntityDef& Reference(const Obx_String& name, int type, ScriptedEntityDef& target);
    ScriptedEntityDef& Key(std::vector<Obx_String> labels);

    // The field (without regard to case), or null; leaves no line in the log.
    ScriptedFieldDef* Find(const Obx_String& fieldName) const;

    int GetType() const override;
    AdFieldDef* GetStateFieldDef() const override;
    AdFieldDef* GetFieldDef(const Obx_String& fieldName, int reserved) const override;
    Obx_String GetFieldPath(const Obx_String& fieldName, int reserved) const override;
    int NumUniqueKeyFieldDefs() const override;
    int GetUniqueKeyFieldDefLabels(CStringArray& labels) const override;
    void GetAttachmentFieldDefNames(CStringArray& names) const override;
    AdActionDef* LookupActionDef(AdActionType_t type) const override;

  private:
    ScriptedAnswer Question(const char* name,
                            std::initializer_list<CallArgument> arguments = {}) const;

    std::list<std::unique_ptr<ScriptedFieldDef>> m_fields;
    ScriptedFieldDef* m_stateField = nullptr;
    std::vector<Obx_String> m_key{field_dbid};
    std::unique_ptr<ScriptedActionDef> m_duplicateAction;
};

#endif
