#include "platform/foundation/cobject.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(CObject, EqualsOnlyItself) {
    const CObject one;
    const CObject other;
    EXPECT_TRUE(one.Is_Equal(one));
    EXPECT_FALSE(one.Is_Equal(other));
    EXPECT_TRUE(one.Is_Equal_Pretest(one));
    EXPECT_EQ(one.Hash(), one.Hash());
}

TEST(CObject, NamesItsClass) {
    EXPECT_STREQ(CObject().Object_Type(), "CObject");
}

TEST(CObject, CannotBeCopiedConvertedOrWrittenOut) {
    CObject one;
    const CObject other;
    EXPECT_EQ(one.Clone(), nullptr);
    EXPECT_FALSE(one.Do_Convert(other));
    std::ostringstream out;
    EXPECT_FALSE(one.Serialize(out));
    EXPECT_EQ(out.str(), "");
}

// A base that is reached twice makes one object only when it is inherited virtually.
struct SecondBranch : virtual Obx_Object {};
struct Joined : CObject, SecondBranch {};

TEST(CObject, HasOneRoot) {
    Joined joined;
    EXPECT_EQ(static_cast<Obx_Object*>(static_cast<CObject*>(&joined)),
              static_cast<Obx_Object*>(static_cast<SecondBranch*>(&joined)));
}

TEST(CObject, IsDestroyedThroughItsRoot) {
    struct Counted : CObject {
        explicit Counted(int& destroyed) : m_destroyed(destroyed) {}
        ~Counted() override { ++m_destroyed; }
        int& m_destroyed;
    };
    int destroyed = 0;
    const Obx_Object* object = new Counted(destroyed);
    delete object;
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
