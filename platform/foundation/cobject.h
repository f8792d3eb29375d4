#ifndef PLATFORM_FOUNDATION_COBJECT_H
#define PLATFORM_FOUNDATION_COBJECT_H

#include <cstddef>
#include <iosfwd>

#include "platform/foundation/obx_object.h"

// Base of the classes that take part in the object model. The operations below have defaults that
// suit an object with identity: it equals only itself and cannot be copied or written out. Their
// order is part of the binary interface.
class CObject : public virtual Obx_Object {
  public:
    CObject() = default;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
    ~CObject() override = default;

    // The name of the object's class.
    virtual const char* Object_Type() const;

    // A copy that the caller owns, or null when the class does not support copying.
    virtual CObject* Clone() const;

    // Whether the two objects hold the same value.
    virtual bool Is_Equal(const CObject& other) const;

    // A cheap test that may say "equal" wrongly but never "unequal" wrongly.
    virtual bool Is_Equal_Pretest(const CObject& other) const;

    // Equal objects have equal hashes.
    virtual std::size_t Hash() const;

    // Takes over the value of another object; false when its class does not convert to this one.
    virtual bool Do_Convert(const CObject& from);

    // Writes the object's value; false when the class does not support it.
    virtual bool Serialize(std::ostream& out) const;
};

#endif
