#include "ztimporter/adimporter/open_record.h"

#include "platform/core/adtext.h"
#include "ztimporter/adimporter/bad_value.h"

namespace adimporter {

AdFieldInfoPtr FieldOf(const AdEntity& record, const Obx_String& fieldName) {
    AdFieldInfoPtr field = record.GetFieldValue(fieldName);
    Require(field, u"fieldInfo != __null");
    return field;
}

long DbIdOf(const AdEntity& record) {
    return AdStrToLong(FieldOf(record, field_dbid)->GetValue());
}

AdEntityDef& ReferencedType(const AdEntity& record, const Obx_String& fieldName) {
    const AdEntityDef& type = Require(record.GetEntityDef(), u"entityDef != __null");
    const AdFieldDef& field = Require(type.GetFieldDef(fieldName, 0), u"fieldDef != __null");
    return Require(field.GetReferenceEntityDef(), u"referenceEntityDef != __null");
}

}  // namespace adimporter
