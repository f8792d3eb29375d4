#ifndef RECORDDB_EDITING_FIELD_DEF_H
#define RECORDDB_EDITING_FIELD_DEF_H

#include "platform/core/adentitydef.h"
#include "recorddb/schema.h"

namespace recorddb {

// A field of a record type. Its number is its position in the type, from 1.
class FieldDef final : public AdFieldDef {
  public:
    // The schema's field outlives the definition.
    explicit FieldDef(const schema::Field& field)
        : m_field(field), m_name(Obx_String::FromUtf8(field.name)) {}

    long GetDbId() const override { return static_cast<long>(m_field.index) + 1; }
    Obx_String GetName() const override { return m_name; }
    AdEntityDef* GetReferenceEntityDef() const override { return m_target; }

    const schema::Field& Field() const { return m_field; }
    const Obx_String& Name() const { return m_name; }

    // Says which record type a reference field points at, once all types are defined.
    void SetReferenceEntityDef(AdEntityDef* target) { m_target = target; }

  private:
    const schema::Field& m_field;
    Obx_String m_name;
    AdEntityDef* m_target = nullptr;
};

}  // namespace recorddb

#endif
