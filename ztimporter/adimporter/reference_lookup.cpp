#include "platform/core/adquery.h"
#include "platform/foundation/obx_assert.h"
#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/message_text.h"
#include "ztimporter/adimporter/open_record.h"

using adimporter::AppendCaughtException;
using adimporter::EndWithError;
using adimporter::MessageText;
using adimporter::Require;
using adimporter::TraceImporter;

namespace {

// Runs the query; true when its first row was fetched.
bool FetchFirst(AdResultSet& resultSet) {
    resultSet.Prepare();
    resultSet.Execute();
    int status = 1;
    resultSet.FetchNext(status);
    return status == 1;
}

}  // namespace

int AdImporter::IsReferenceIDValid(AdEntityPtr impEntity, Obx_String fieldName,
                                   Obx_String& fieldValue, Obx_String referencedFieldName,
                                   Obx_String uniqueKey, Obx_String& error) {
    TraceImporter(
        u"IsReferenceIDValid begins, fieldName: %s, fieldValue: %s, referencedFieldName: %s, "
        u"uniqueKey: %s",
        fieldName, fieldValue, referencedFieldName, uniqueKey);
    // Outside the try, as are the traces up to here: a missing record ends the caller's work, not
    // only this lookup.
    if (!impEntity) {
        adimporter::ThrowBadValue(u"impEntity != __null");
    }
    const AdEntity& record = *impEntity;
    if (fieldName.IsEmpty() || fieldValue.IsEmpty() || uniqueKey.IsEmpty()) {
        TraceImporter(u"IsReferenceIDValid ends");
        return 1;
    }
    try {
        AdEntityDef& type = adimporter::ReferencedType(record, fieldName);
        AdQueryDefPtr query = BuildQueryDef(m_session, &type, 0);
        Require(query, u"queryDef != __null").SelectField(1, type.GetFieldPath(uniqueKey, 0));
        query->BuildFilter(nullptr, referencedFieldName, AdCompOp_t::kEqual, fieldValue, 1);
        AdResultSetPtr resultSet = BuildResultSet(m_session, query);
        int messageId = message_id::kReferenceNotFound;
        if (resultSet) {
            Obx_Assert(static_cast<bool>(resultSet), u"rset != NULL");
            const bool fetched = FetchFirst(*resultSet);
            const long rows = resultSet->GetRowCount();
            if (rows > 1) {
                messageId = message_id::kReferenceAmbiguous;
            } else if (rows == 1 && fetched) {
                resultSet->GetColumn(1, fieldValue, 0);
                UnbuildResultSet(m_session, resultSet);
                UnbuildQueryDef(m_session, query);
                TraceImporter(u"IsReferenceIDValid ends");
                return 1;
            }
        }
        error = MessageText(
            messageId, {{u"_entitydef_", record.GetEntityDef()->GetName()},
                        {u"_fieldname_", fieldName},
                        {u"_refentitydef_", record.GetFieldReferencedEntityDefName(fieldName)}});
        if (resultSet) {
            UnbuildResultSet(m_session, resultSet);
        }
        UnbuildQueryDef(m_session, query);
    } catch (...) {
        AppendCaughtException(error);
    }
    return EndWithError(u"IsReferenceIDValid ends with error: %s", error);
}

AdResultSetPtr AdImporter::GetResultSetWhere(AdEntityDef* recordType, Obx_String fieldName,
                                             Obx_String value, Obx_String& error) {
    try {
        TraceImporter(u"GetResultSetWhere begins: filed=%s, value=%s", fieldName, value);
        const AdEntityDef& type = Require(recordType, u"recordType != __null");
        const AdFieldDef& field = Require(type.GetFieldDef(fieldName, 0), u"fieldDef != __null");
        AdQueryDefPtr query = BuildQueryDef(m_session, recordType, 0);
        Require(query, u"queryDef != __null").SelectDbId(1);
        query->BuildFilter(nullptr, field.GetName(), AdCompOp_t::kEqual, value, 1);
        AdResultSetPtr resultSet = BuildResultSet(m_session, query);
        Obx_Assert(static_cast<bool>(resultSet), u"adResultSetPtr != NULL");
        resultSet->SetRowLimit(100);
        const bool fetched = FetchFirst(*resultSet);
        UnbuildQueryDef(m_session, query);
        if (fetched) {
            TraceImporter(u"GetResultSetWhere ends successfully");
            return resultSet;
        }
        // Nothing matched, which is not an error here. The result set is let go, not unbuilt.
        resultSet.SetPtr(nullptr);
        TraceImporter(u"GetResultSetWhere ends");
    } catch (...) {
        adimporter::ReplaceOrAppendCaughtException(adimporter::TakeCaughtException(), error);
        EndWithError(u"GetResultSetWhere ends with error: %s", error);
    }
    return nullptr;
}
