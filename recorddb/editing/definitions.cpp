#include "recorddb/editing/definitions.h"

#include <algorithm>

#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

Definitions::Definitions(const schema::Schema& schema) : m_schema(schema) {
    for (const schema::RecordType& type : schema.Types()) {
        m_types.emplace_back(type);
    }
    for (EntityDef& type : m_types) {
        for (FieldDef& field : type.Fields()) {
            field.SetReferenceEntityDef(WithId(field.Field().target));
        }
    }
}

EntityDef& Definitions::Find(const Obx_String& name) {
    const std::string utf8 = name.ToUtf8();
    const schema::RecordType* const type = m_schema.FindType(utf8);
    if (type == nullptr) {
        ThrowMessage(ErrorMessage(message_id::kNoRecordType, {{u"_value_", utf8}}));
    }
    return *WithId(type->id);
}

EntityDef& Definitions::Own(const AdEntityDef* definition) {
    const auto found =
        std::find_if(m_types.begin(), m_types.end(),
                     [definition](const EntityDef& type) { return &type == definition; });
    if (found == m_types.end()) {
        AdThrowMsgExcept(AdGetBadValue0MsgID(), u"the record type is not one of this session",
                         u"recorddb/editing/definitions", __LINE__);
    }
    return *found;
}

EntityDef* Definitions::WithId(std::int64_t id) {
    const bool known = id >= 1 && id <= static_cast<std::int64_t>(m_types.size());
    return known ? &m_types[static_cast<std::size_t>(id - 1)] : nullptr;
}

}  // namespace recorddb
