#include "system/RefCntPtr.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace qve {
namespace {

struct Counted : RefCntObject {
    explicit Counted(int& alive) : m_alive(alive) { ++m_alive; }
    ~Counted() override { --m_alive; }
    int& m_alive;
};
struct Special : Counted {
    using Counted::Counted;
};

TEST(RefCntPtr, TheLastReferenceEndsTheObject) {
    int alive = 0;
    {
        RefCntPtr<Special> special = MakeRef<Special>(alive);
        RefCntPtr<Counted> base = special;
        EXPECT_EQ(base->GetRefCount(), 2U);
        RefCntPtr<Counted> moved = std::move(base);
        EXPECT_FALSE(base);
        EXPECT_EQ(moved->GetRefCount(), 2U);
        special.reset();
        EXPECT_EQ(alive, 1);
        EXPECT_TRUE(DynamicPtrCast<Special>(moved));
        moved = RefCntPtr<Counted>(moved.get());  // to itself
        EXPECT_EQ(moved->GetRefCount(), 1U);
        RefCntPtr<Counted> from_special = MakeRef<Special>(alive);
        RefCntPtr<Counted> other = MakeRef<Counted>(alive);
        EXPECT_FALSE(DynamicPtrCast<Special>(other));
        EXPECT_EQ(alive, 3);
        Counted* raw = other.detach();
        EXPECT_FALSE(other);
        raw->Release();
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST(RefCntPtr, CountsFromManyThreads) {
    int alive = 0;
    RefCntPtr<Counted> shared = MakeRef<Counted>(alive);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([copy = shared] {
                for (int i = 0; i < 10000; ++i) {
                    const RefCntPtr<Counted> again = copy;
                    EXPECT_GE(again->GetRefCount(), 2U);
                }
            });
        }
    }
    EXPECT_EQ(shared->GetRefCount(), 1U);
    shared.reset();
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace qve
