#include <gtest/gtest.h>

#include <array>

#include "algebra/BridgeProgressCallback.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/PipelineProgressCallback.h"
#include "system/Operator.h"

namespace qve {
namespace {

using Counters = std::array<uint64_t, 4>;

Counters Progress(const ProgressCallback& callback) {
    Counters c{};
    callback.GetProgress(c[0], c[1], c[2], c[3]);
    return c;
}

TEST(ProgressTest, PipelineSumsAndCancelsItsChildren) {
    constexpr uint64_t unknown = ~uint64_t{0};
    PipelineProgressCallback pipeline;
    const auto a = MakeRef<ProgressCallbackImpl>();
    const auto b = MakeRef<ProgressCallbackImpl>();
    pipeline.AddChild(a);
    pipeline.AddChild(b);
    a->SetProgress(1, 2, 3, 4);
    b->SetProgress(10, unknown, 30, 40);
    EXPECT_EQ(Progress(pipeline), (Counters{11, unknown, 33, 44}));
    pipeline.SetCancelled();
    EXPECT_TRUE(a->IsCancelled());
    const auto late = MakeRef<ProgressCallbackImpl>();
    pipeline.AddChild(late);
    EXPECT_TRUE(late->IsCancelled());
}

TEST(ProgressTest, DelegateIsRestoredAndLearnsOfCancels) {
    DelegatedProgressCallback callback;
    EXPECT_EQ(Progress(callback), Counters());
    const auto inner = MakeRef<ProgressCallbackImpl>();
    const auto outer = MakeRef<ProgressCallbackImpl>();
    callback.SetDelegate(outer);
    {
        DelegatedProgressCallback::RestoreDelegate scope(callback, inner);
        callback.SetProgress(1, 2, 3, 4);
        EXPECT_EQ(Progress(callback), (Counters{1, 2, 3, 4}));
    }
    EXPECT_EQ(callback.GetDelegate(), outer);
    EXPECT_EQ(Progress(*outer), Counters());
    callback.SetDelegate(nullptr);
    callback.SetCancelled();  // nobody to tell yet
    EXPECT_FALSE(inner->IsCancelled());
    callback.SetDelegate(inner);
    EXPECT_TRUE(inner->IsCancelled());
}

TEST(ProgressTest, BridgeIsAShareOfItsParent) {
    const auto parent = MakeRef<ProgressCallbackImpl>();
    parent->SetProgress(5, 6, 0, 100);
    BridgeProgressCallback bridge(parent, 20, 60);
    bridge.SetProgress(0, 0, 1, 4);
    EXPECT_EQ(Progress(*parent), (Counters{5, 6, 30, 100}));
    bridge.SetProgress(0, 0, 9, 4);  // never more than its share
    EXPECT_EQ(Progress(*parent)[2], 60u);
    EXPECT_FALSE(bridge.IsCancelled());
    parent->SetCancelled();
    EXPECT_TRUE(bridge.IsCancelled());
}

TEST(ProgressTest, StepsEndACancelledOperator) {
    OperatorProgressCallback progress;
    progress.Step(1, 10);
    OperatorProgressCallback::Check(nullptr);
    progress.SetCancelled();
    EXPECT_THROW(progress.Step(2, 10), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
