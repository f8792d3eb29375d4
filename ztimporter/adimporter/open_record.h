#ifndef ZTIMPORTER_ADIMPORTER_OPEN_RECORD_H
#define ZTIMPORTER_ADIMPORTER_OPEN_RECORD_H

#include "platform/core/adentity.h"

namespace adimporter {

// What the importer reads of an open record. Where the core answers with null, the value is bad.

// The field as it is at this moment.
AdFieldInfoPtr FieldOf(const AdEntity& record, const Obx_String& fieldName);

// The record's database identifier.
long DbIdOf(const AdEntity& record);

// The record type that a reference field points at.
AdEntityDef& ReferencedType(const AdEntity& record, const Obx_String& fieldName);

}  // namespace adimporter

#endif
