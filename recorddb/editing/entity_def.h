#ifndef RECORDDB_EDITING_ENTITY_DEF_H
#define RECORDDB_EDITING_ENTITY_DEF_H

#include <deque>
#include <string_view>
#include <vector>

#include "platform/core/adentitydef.h"
#include "recorddb/editing/action_def.h"
#include "recorddb/editing/field_def.h"
#include "recorddb/schema.h"

namespace recorddb {

// A record type of the schema as the core knows it.
class EntityDef final : public AdEntityDef {
  public:
    // The schema's record type outlives the definition.
    explicit EntityDef(const schema::RecordType& type);

    long GetDbId() const override { return static_cast<long>(m_type.id); }
    Obx_String GetName() const override { return m_name; }
    int GetType() const override { return static_cast<int>(m_type.kind); }
    AdFieldDef* GetStateFieldDef() const override { return m_stateField; }
    AdFieldDef* GetFieldDef(const Obx_String& fieldName, int reserved) const override;
    Obx_String GetFieldPath(const Obx_String& fieldName, int reserved) const override;
    int NumUniqueKeyFieldDefs() const override { return static_cast<int>(m_type.key.size()); }
    int GetUniqueKeyFieldDefLabels(CStringArray& labels) const override;
    void GetAttachmentFieldDefNames(CStringArray& names) const override;
    AdActionDef* LookupActionDef(AdActionType_t type) const override;

    const schema::RecordType& Type() const { return m_type; }
    const Obx_String& Name() const { return m_name; }

    // The field of that name, without regard to case; null when there is none.
    const FieldDef* FindField(std::u16string_view name) const;

    // The field of that name. Throws a PaMsgException* when there is none.
    const FieldDef& Field(const Obx_String& name) const;

    // In the order of the schema's fields.
    std::deque<FieldDef>& Fields() { return m_fields; }

  private:
    const schema::RecordType& m_type;
    Obx_String m_name;
    // A deque, since fields are handed out by address and do not move. The core's contract hands
    // them out as non-const, although nothing in them can be changed.
    mutable std::deque<FieldDef> m_fields;
    mutable std::vector<ActionDef> m_actions;
    FieldDef* m_stateField = nullptr;
    // The position of the field found last: callers ask for one several times in a row, for its
    // type and to set it.
    mutable std::size_t m_lastFound = 0;
};

}  // namespace recorddb

#endif
