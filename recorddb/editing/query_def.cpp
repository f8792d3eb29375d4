#include "recorddb/editing/query_def.h"

#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

const schema::Field& QueryDef::SearchableField(const Obx_String& name) const {
    const schema::Field& field = m_def.Field(name).Field();
    if (!schema::HasColumn(field.kind)) {
        ThrowMessage(FieldMessage(message_id::kFieldNotSearchable, Type(), field, {}));
    }
    return field;
}

void QueryDef::Select(int column, const schema::Field& field) {
    if (column < 1) {
        ThrowMessage(ErrorMessage(message_id::kNoColumn, {{u"_datatype_", Type().name},
                                                          {u"_value_", std::to_string(column)}}));
    }
    const auto position = static_cast<std::size_t>(column - 1);
    if (m_columns.size() <= position) {
        m_columns.resize(position + 1);
    }
    m_columns[position] = &field;
}

void QueryDef::SelectField(int column, const Obx_String& fieldPath) {
    Select(column, SearchableField(fieldPath));
}

void QueryDef::SelectDbId(int column) {
    Select(column, Type().fields.front());
}

AdFilterNode* QueryDef::BuildFilter(AdFilterNode* /*parent*/, const Obx_String& fieldName,
                                    AdCompOp_t /*operation*/, const Obx_String& value,
                                    int /*reserved*/) {
    const schema::Field& field = SearchableField(fieldName);
    std::string utf8;
    if (Utf16ToUtf8(value.View(), utf8).has_value()) {
        ThrowMessage(FieldMessage(message_id::kValueNotText, Type(), field,
                                  {{u"_value_", Utf16ToUtf8Lossy(value.View())}}));
    }
    return &m_filters.emplace_back(field, std::move(utf8));
}

}  // namespace recorddb
