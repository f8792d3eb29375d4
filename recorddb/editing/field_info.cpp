#include "recorddb/editing/field_info.h"

namespace recorddb {

Obx_String FieldInfo::GetValue() const {
    Obx_String joined;
    for (const Obx_String& value : m_values) {
        if (&value != m_values.data()) {
            joined += u'\n';
        }
        joined += value;
    }
    return joined;
}

void FieldInfo::GetValue(CStringArray& values) const {
    values.RemoveAll();
    for (const Obx_String& value : m_values) {
        values.Add(value);
    }
}

int FieldInfo::GetValueStatus() const {
    return m_values.empty() ? ad_value_status::kHasNoValue : ad_value_status::kHasValue;
}

}  // namespace recorddb
