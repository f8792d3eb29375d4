#ifndef RECORDDB_EDITING_FIELD_INFO_H
#define RECORDDB_EDITING_FIELD_INFO_H

#include <utility>
#include <vector>

#include "platform/core/adentity.h"

namespace recorddb {

// A field's value as texts: those of a list, or one, or none.
class FieldInfo final : public AdFieldInfo {
  public:
    explicit FieldInfo(std::vector<Obx_String> values) : m_values(std::move(values)) {}

    Obx_String GetValue() const override;
    void GetValue(CStringArray& values) const override;
    int GetValueStatus() const override;

  private:
    std::vector<Obx_String> m_values;
};

}  // namespace recorddb

#endif
