#include "platform/foundation/cobject.h"

#include <functional>

const char* CObject::Object_Type() const {
    return "CObject";
}

CObject* CObject::Clone() const {
    return nullptr;
}

bool CObject::Is_Equal(const CObject& other) const {
    return this == &other;
}

bool CObject::Is_Equal_Pretest(const CObject& other) const {
    return Hash() == other.Hash();
}

std::size_t CObject::Hash() const {
    return std::hash<const void*>{}(this);
}

bool CObject::Do_Convert(const CObject& /*from*/) {
    return false;
}

bool CObject::Serialize(std::ostream& /*out*/) const {
    return false;
}
