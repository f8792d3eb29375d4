#ifndef PLATFORM_CORE_ADENTITYDEF_H
#define PLATFORM_CORE_ADENTITYDEF_H

#include "platform/foundation/cstringarray.h"
#include "platform/foundation/obx_string.h"

class AdEntityDef;

// Something that the database knows by a number and a name.
class AdDataObject {
  public:
    virtual ~AdDataObject() = default;

    virtual long GetDbId() const = 0;
    // The name as the schema writes it.
    virtual Obx_String GetName() const = 0;
};

// What a field can hold, as AdEntity::GetFieldType tells it.
namespace ad_field_type {

inline constexpr int kShortText = 1;
inline constexpr int kMultiline = 2;
inline constexpr int kInteger = 3;
inline constexpr int kDateTime = 4;
inline constexpr int kReference = 5;
inline constexpr int kReferenceList = 6;
inline constexpr int kAttachments = 7;
inline constexpr int kDisplayId = 8;
inline constexpr int kState = 9;
inline constexpr int kHistory = 10;
inline constexpr int kDbId = 11;
inline constexpr int kChoice = 12;

}  // namespace ad_field_type

// Kinds of record type, as AdEntityDef::GetType tells them.
namespace ad_entity_kind {

inline constexpr int kWithStates = 1;
inline constexpr int kWithoutStates = 2;

}  // namespace ad_entity_kind

// The name of every record's database identifier field.
inline constexpr const char16_t* field_dbid = u"dbid";

// The definition of a field.
class AdFieldDef : public AdDataObject {
  public:
    // The record type that a reference or reference list points at; null for other fields. Owned by
    // the session.
    virtual AdEntityDef* GetReferenceEntityDef() const = 0;
};

enum class AdActionType_t : int {
    kSubmit = 1,
    kModify = 2,
    kChangeState = 3,
    kDuplicate = 4,
    kImport = 5,
};

// The definition of an action.
class AdActionDef : public AdDataObject {
  public:
    virtual AdActionType_t GetType() const = 0;
};

// The definition of a record type. Definitions are owned by the session and live as long as it
// does. Field names are matched without regard to case; looking up a field that the type does not
// have throws a PaMsgException* that names type and field.
class AdEntityDef : public AdDataObject {
  public:
    // 1 when records of the type have states, 2 when they have none (ad_entity_kind).
    virtual int GetType() const = 0;

    // The state field; null when the type has no states.
    virtual AdFieldDef* GetStateFieldDef() const = 0;

    // The field of this name. The flag is reserved and must be 0.
    virtual AdFieldDef* GetFieldDef(const Obx_String& fieldName, int reserved) const = 0;

    // The path by which a query selects the field. The flag is reserved and must be 0.
    virtual Obx_String GetFieldPath(const Obx_String& fieldName, int reserved) const = 0;

    // The number of fields that make up the unique key.
    virtual int NumUniqueKeyFieldDefs() const = 0;

    // Replaces `labels` by the names of the unique key's fields in key order; returns their number.
    virtual int GetUniqueKeyFieldDefLabels(CStringArray& labels) const = 0;

    // Replaces `names` by the names of the attachment fields, in the schema's order.
    virtual void GetAttachmentFieldDefNames(CStringArray& names) const = 0;

    // The type's action of this kind; throws a PaMsgException* when it has none.
    virtual AdActionDef* LookupActionDef(AdActionType_t type) const = 0;
};

#endif
