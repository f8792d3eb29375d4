#include "platform/core/adptr.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

// Tells when it is freed.
class Watched : public AdRefCounted {
  public:
    explicit Watched(int& freed) : m_freed(freed) {}
    int Number() const { return 7; }

  protected:
    ~Watched() override { ++m_freed; }

  private:
    int& m_freed;
};

class AdPtrTest : public testing::Test {
  protected:
    AdPtr<Watched> Make() { return AdPtr<Watched>(new Watched(m_freed)); }

    int m_freed = 0;
};

TEST_F(AdPtrTest, IsNullAtFirst) {
    const AdPtr<Watched> handle;
    EXPECT_FALSE(handle);
    EXPECT_EQ(handle.GetPtr(), nullptr);
    EXPECT_FALSE(AdPtr<Watched>(nullptr));
}

TEST_F(AdPtrTest, ReachesItsObject) {
    const AdPtr<Watched> handle = Make();
    EXPECT_TRUE(handle);
    EXPECT_EQ(handle->Number(), 7);
    EXPECT_EQ((*handle).Number(), 7);
}

TEST_F(AdPtrTest, TheObjectLivesAsLongAsOneHandle) {
    {
        const AdPtr<Watched> outer = Make();
        {
            const AdPtr<Watched> inner = outer;
            EXPECT_EQ(inner.GetPtr(), outer.GetPtr());
        }
        EXPECT_EQ(m_freed, 0);
    }
    EXPECT_EQ(m_freed, 1);
}

TEST_F(AdPtrTest, SetPtrLetsGoOfTheFormerObject) {
    AdPtr<Watched> handle = Make();
    handle.SetPtr(new Watched(m_freed));
    EXPECT_EQ(m_freed, 1);
    handle.SetPtr(nullptr);
    EXPECT_EQ(m_freed, 2);
    EXPECT_FALSE(handle);
}

TEST_F(AdPtrTest, SetPtrToTheSameObjectKeepsIt) {
    AdPtr<Watched> handle = Make();
    handle.SetPtr(handle.GetPtr());
    EXPECT_EQ(m_freed, 0);
    EXPECT_EQ(handle->Number(), 7);
    handle.SetPtr(nullptr);
    EXPECT_EQ(m_freed, 1);
}

TEST_F(AdPtrTest, SetPtrOfAnotherHandlesObjectSharesIt) {
    AdPtr<Watched> first = Make();
    AdPtr<Watched> second;
    second.SetPtr(first.GetPtr());
    first.SetPtr(nullptr);
    EXPECT_EQ(m_freed, 0);
    second.SetPtr(nullptr);
    EXPECT_EQ(m_freed, 1);
}

TEST_F(AdPtrTest, AssigningItselfKeepsTheObject) {
    AdPtr<Watched> handle = Make();
    AdPtr<Watched>& same = handle;
    handle = same;
    EXPECT_EQ(m_freed, 0);
    handle = std::move(same);
    EXPECT_EQ(m_freed, 0);
    EXPECT_EQ(handle->Number(), 7);
}

TEST_F(AdPtrTest, AssigningSharesTheObject) {
    AdPtr<Watched> first = Make();
    AdPtr<Watched> second = Make();
    second = first;
    EXPECT_EQ(m_freed, 1);
    EXPECT_EQ(second.GetPtr(), first.GetPtr());
}

TEST_F(AdPtrTest, MovingHandsTheObjectOver) {
    AdPtr<Watched> first = Make();
    AdPtr<Watched> second(std::move(first));
    EXPECT_EQ(m_freed, 0);
    EXPECT_EQ(second->Number(), 7);
    AdPtr<Watched> third;
    third = std::move(second);
    EXPECT_EQ(third->Number(), 7);
    third = nullptr;
    EXPECT_EQ(m_freed, 1);
}

TEST_F(AdPtrTest, MovingLetsGoOfTheFormerObjectAtOnce) {
    AdPtr<Watched> first = Make();
    AdPtr<Watched> second = Make();
    second = std::move(first);
    EXPECT_EQ(m_freed, 1);
}

}  // namespace
