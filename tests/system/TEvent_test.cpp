#include "system/TEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace qve {
namespace {

using namespace std::chrono_literals;

TEST(TEvent, StaysSetUntilReset) {
    TEvent event;
    EXPECT_FALSE(event.IsSet());
    EXPECT_FALSE(event.WaitFor(1ms));
    event.Set();
    event.Wait();
    EXPECT_TRUE(event.WaitFor(0ms));
    event.Reset();
    EXPECT_FALSE(event.WaitFor(1ms));
}

TEST(TEvent, LetsAllWaitersThrough) {
    TEvent event;
    std::atomic<int> passed{0};
    {
        std::jthread first([&] {
            event.Wait();
            ++passed;
        });
        std::jthread second([&] {
            if (event.WaitFor(10s)) ++passed;
        });
        EXPECT_EQ(passed, 0);
        event.Set();
    }
    EXPECT_EQ(passed, 2);
}

}  // namespace
}  // namespace qve
