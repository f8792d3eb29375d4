#ifndef TESTS_SCRIPTED_SCRIPTED_DATA_OBJECT_H
#define TESTS_SCRIPTED_SCRIPTED_DATA_OBJECT_H

#include <string>
#include <utility>

#include "platform/core/adentitydef.h"
#include "platform/foundation/obx_string.h"

class ScriptedCore;

// What all scripted definitions can tell without leaving a line in the log.
class ScriptedName {
  public:
    explicit ScriptedName(Obx_String name) : m_name(std::move(name)) {}
    const Obx_String& Name() const { return m_name; }

  protected:
    ~ScriptedName() = default;
    // Writes "NAME.GetName()" or "NAME.GetDbId()" and throws if that was told.
    void Asked(ScriptedCore& core, const char* question) const;

  private:
    Obx_String m_name;
};

// The number and the name of a scripted definition.
template <typename Definition>
class ScriptedDataObject : public Definition, public ScriptedName {
  public:
    ScriptedDataObject(ScriptedCore& core, Obx_String name, long dbId)
        : ScriptedName(std::move(name)), m_core(core), m_dbId(dbId) {}

    long GetDbId() const override {
        Asked(m_core, "GetDbId");
        return m_dbId;
    }
    Obx_String GetName() const override {
        Asked(m_core, "GetName");
        return Name();
    }

  protected:
    ScriptedCore& Core() const { return m_core; }

  private:
    ScriptedCore& m_core;
    long m_dbId;
};

#endif
