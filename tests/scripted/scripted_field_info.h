#ifndef TESTS_SCRIPTED_SCRIPTED_FIELD_INFO_H
#define TESTS_SCRIPTED_SCRIPTED_FIELD_INFO_H

#include <vector>

#include "platform/core/adentity.h"

class ScriptedCore;

// A field's value as a scripted record gives it. The reads are named "GetValue" and "GetValues"
// when a test tells them what to do.
class ScriptedFieldInfo : public AdFieldInfo {
  public:
    ScriptedFieldInfo(ScriptedCore& core, Obx_String field, std::vector<Obx_String> values);

    Obx_String GetValue() const override;
    void GetValue(CStringArray& values) const override;
    int GetValueStatus() const override;

  protected:
    ~ScriptedFieldInfo() override;

  private:
    ScriptedCore& m_core;
    Obx_String m_field;
    std::vector<Obx_String> m_values;
};

#endif
