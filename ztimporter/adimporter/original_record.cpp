#include "ztimporter/adimporter/original_record.h"

#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/message_text.h"

using adimporter::MessageText;
using adimporter::Require;

AdImporter::Steps::OriginalRecord::OriginalRecord(AdImporter& importer, Obx_String value,
                                                  Obx_String& error)
    : m_importer(importer), m_value(std::move(value)) {
    if (importer.m_originalID.IsEmpty() || m_value.IsEmpty()) {
        return;
    }
    m_resultSet =
        importer.GetResultSetWhere(importer.m_entityDef, importer.m_originalID, m_value, error);
    if (!m_resultSet) {
        return;
    }
    const long rows = m_resultSet->GetRowCount();
    if (rows < 0) {
        m_found = Matches::kUnknown;
    } else if (rows > 0) {
        m_found = rows == 1 ? Matches::kOne : Matches::kMany;
    }
}

Obx_String AdImporter::Steps::OriginalRecord::Identifier() const {
    Obx_String identifier;
    m_resultSet->GetColumn(1, identifier, 0);
    return identifier;
}

Obx_String AdImporter::Steps::OriginalRecord::NotOneText() const {
    const int id =
        m_found == Matches::kNone ? message_id::kRecordNotFound : message_id::kRecordAmbiguous;
    const AdEntityDef& type = Require(m_importer.m_entityDef, u"m_entityDef != __null");
    return MessageText(id, {{u"_datatype_", type.GetName()},
                            {u"_field_", m_importer.m_originalID},
                            {u"_value_", m_value}});
}

void AdImporter::Steps::OriginalRecord::Unbuild() {
    if (m_resultSet) {
        UnbuildResultSet(m_importer.m_session, m_resultSet);
    }
}
