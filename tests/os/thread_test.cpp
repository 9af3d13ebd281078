#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "os/Semaphore.h"
#include "os/Thread.h"
#include "os/Timer.h"
#include "system/TEvent.h"

namespace qve {
namespace {

class Body : public Runnable {
public:
    explicit Body(std::function<void()> run) : m_run(std::move(run)) {}
    void Run() override { m_run(); }

private:
    std::function<void()> m_run;
};

TEST(ThreadTest, RunsItsBodyAndThenTheExitCallbacks) {
    std::vector<std::string> steps;
    static std::vector<std::string>* s_steps = nullptr;
    s_steps = &steps;
    Thread::AtEveryExit([] {
        if (s_steps) s_steps->push_back("every");
    });
    Thread::AtExit([] { FAIL() << "the main thread is no Thread"; });
    const auto thread = MakeRef<Thread>(MakeRef<Body>([&] {
        Thread::AtExit([&] { steps.push_back("first"); });
        Thread::AtExit([&] { steps.push_back("second"); });
        steps.push_back("body");
    }));
    EXPECT_NE(thread->get_id(), Thread::id());
    thread->join();
    EXPECT_FALSE(thread->joinable());
    s_steps = nullptr;
    EXPECT_THAT(steps, testing::ElementsAre("body", "every", "second", "first"));
}

TEST(ThreadTest, RunsOnWhenNobodyHoldsIt) {
    TEvent released, ended;
    MakeRef<Thread>(MakeRef<Body>([&] {
        released.Wait();
        ended.Set();
    }));
    released.Set();
    ended.Wait();
}

TEST(SemaphoreTest, LetsAsManyThroughAsWereReleased) {
    const auto semaphore = Semaphore::Construct();
    std::atomic<int> through{0};
    std::vector<RefCntPtr<Thread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(MakeRef<Thread>(MakeRef<Body>([&] {
            semaphore->Acquire();
            ++through;
        })));
    }
    for (int i = 0; i < 4; ++i) semaphore->Release();
    for (const auto& thread : threads) thread->join();
    EXPECT_EQ(through, 4);
}

TEST(TimerTest, CountsOnlyWhileItRuns) {
    Timer timer;
    EXPECT_EQ(timer.ElapsedSec(), 0);
    timer.Start();
    const double start = Timer::GetApplicationElapsedSecs();
    while (Timer::GetApplicationElapsedSecs() == start) {
    }
    timer.Stop();
    const double counted = timer.ElapsedSec();
    EXPECT_GT(counted, 0);
    EXPECT_EQ(timer.ElapsedSec(), counted);
    EXPECT_DOUBLE_EQ(timer.ElapsedMsec(), counted * 1000);
    timer.Reset();
    EXPECT_EQ(timer.ElapsedSec(), 0);
}

}  // namespace
}  // namespace qve
