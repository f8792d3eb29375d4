#ifndef PLATFORM_CORE_ADENTITY_H
#define PLATFORM_CORE_ADENTITY_H

#include "platform/core/adentitydef.h"
#include "platform/core/adptr.h"
#include "platform/foundation/cstringarray.h"
#include "platform/foundation/obx_string.h"
#include "platform/messages/pamessage.h"

// Whether a field holds a value, as AdFieldInfo::GetValueStatus tells it.
namespace ad_value_status {

inline constexpr int kHasNoValue = 1;
inline constexpr int kHasValue = 2;

}  // namespace ad_value_status

// A field's value at the moment at which it was asked for.
class AdFieldInfo : public AdRefCounted {
  public:
    // The value as one text. The items of a list field are separated by line feeds.
    virtual Obx_String GetValue() const = 0;

    // Replaces `values` by the values of a list field, in order: references by the unique key of
    // the record they point at, attachments as texts of four lines (dbid, file name, size in bytes,
    // description). A field that is not a list gives its one value, or none when it is empty.
    virtual void GetValue(CStringArray& values) const = 0;

    // 2 when the field holds a value, else 1 (ad_value_status).
    virtual int GetValueStatus() const = 0;
};

using AdFieldInfoPtr = AdPtr<AdFieldInfo>;

// One record, open for writing. Changes are kept in memory until Commit; letting go of the last
// handle drops them. Field names are matched without regard to case.
//
// The operations that set values return an empty text on success and otherwise a text that names
// record type, field, value and the rule that refused it; the record is then unchanged. Operations
// that only read throw a PaMsgException* for a field that the record type does not have.
class AdEntity : public AdRefCounted {
  public:
    virtual AdEntityDef* GetEntityDef() const = 0;

    // The field's type code (ad_field_type).
    virtual int GetFieldType(const Obx_String& fieldName) const = 0;

    // The name of the record type that the reference field points at; empty for other fields.
    virtual Obx_String GetFieldReferencedEntityDefName(const Obx_String& fieldName) const = 0;

    virtual AdFieldInfoPtr GetFieldValue(const Obx_String& fieldName) const = 0;

    // Sets a plain value or a reference (by the unique key of the record it points at; the parts of
    // a key of several fields are separated by single blanks). The empty text clears the field.
    // `import` is 1 when the value comes from an import, which may write what people may not edit.
    virtual Obx_String SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                     int import) = 0;

    // Adds a reference to a reference list. A record that the list already holds is not added
    // again.
    virtual Obx_String AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                     int import) = 0;

    // Takes a reference out of a reference list.
    virtual Obx_String DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                        int import) = 0;

    // Adds the content of a file. A relative name is resolved below the folder that the session was
    // given for attachments. The file is read at Commit at the latest.
    virtual Obx_String AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                                     const Obx_String& description) = 0;

    // Removes an attachment, given as AdFieldInfo::GetValue delivers it.
    virtual Obx_String DeleteAttachment(const Obx_String& fieldName,
                                        const Obx_String& attachment) = 0;

    // Checks the record against the rules of its type. `message` keeps id 0 when it may be
    // committed.
    virtual void Validate(PaMessage& message) = 0;

    // Writes the changes. `message` keeps id 0 on success; else nothing was written and the record
    // still holds its changes.
    virtual void Commit(PaMessage& message) = 0;

    // Drops all changes made since the record was opened or last committed.
    virtual void Revert() = 0;
};

using AdEntityPtr = AdPtr<AdEntity>;

#endif
