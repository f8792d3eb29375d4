#ifndef TESTS_SCRIPTED_SCRIPTED_ENTITY_H
#define TESTS_SCRIPTED_SCRIPTED_ENTITY_H

#include <initializer_list>
#include <string>

#include "platform/core/adentity.h"
#include "tests/scripted/call_argument.h"
#include "tests/scripted/scripted_answers.h"

class ScriptedCore;
class ScriptedEntityDef;

// A record of a scripted core. Nothing is kept of what is written to it: the log has it.
class ScriptedEntity : public AdEntity {
  public:
    // `before` stands in front of the record's lines in the log: empty for a record that is being
    // imported, so that these lines are short.
    ScriptedEntity(ScriptedCore& core, ScriptedEntityDef* type, Obx_String dbId,
                   std::string before);

    // Type and identifier ("bug 33"), as calls that take a record show it.
    std::string Label() const;

    AdEntityDef* GetEntityDef() const override;
    int GetFieldType(const Obx_String& fieldName) const override;
    Obx_String GetFieldReferencedEntityDefName(const Obx_String& fieldName) const override;
    AdFieldInfoPtr GetFieldValue(const Obx_String& fieldName) const override;
    Obx_String SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override;
    Obx_String AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override;
    Obx_String DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                int import) override;
    Obx_String AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                             const Obx_String& description) override;
    Obx_String DeleteAttachment(const Obx_String& fieldName, const Obx_String& attachment) override;
    void Validate(PaMessage& message) override;
    void Commit(PaMessage& message) override;
    void Revert() override;

  protected:
    ~ScriptedEntity() override;

  private:
    void Save(const char* step, PaMessage& message);
    ScriptedAnswer Call(const char* name, std::initializer_list<CallArgument> arguments = {}) const;
    ScriptedAnswer Question(const char* name,
                            std::initializer_list<CallArgument> arguments = {}) const;

    ScriptedCore& m_core;
    ScriptedEntityDef* m_type;
    Obx_String m_dbId;
    std::string m_before;
};

#endif
