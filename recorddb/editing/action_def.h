#ifndef RECORDDB_EDITING_ACTION_DEF_H
#define RECORDDB_EDITING_ACTION_DEF_H

#include "platform/core/adentitydef.h"

namespace recorddb {

// An action of a record type. Its number is that of its kind.
class ActionDef final : public AdActionDef {
  public:
    ActionDef(AdActionType_t type, const char16_t* name) : m_type(type), m_name(name) {}

    long GetDbId() const override { return static_cast<long>(m_type); }
    Obx_String GetName() const override { return m_name; }
    AdActionType_t GetType() const override { return m_type; }

  private:
    AdActionType_t m_type;
    Obx_String m_name;
};

}  // namespace recorddb

#endif
