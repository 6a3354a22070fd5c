#include "app/Watchdog.h"

#include <gtest/gtest.h>

#include <future>

using namespace paperline;
using namespace std::chrono_literals;

TEST(Watchdog, NoticesACallThatDoesNotReturn) {
    std::promise<void> noticed;
    Watchdog dog(20ms, [&noticed] { noticed.set_value(); });
    dog.callStarts();
    EXPECT_EQ(noticed.get_future().wait_for(30s), std::future_status::ready);
}

TEST(Watchdog, TakesTheShorterLimitWhileItApplies) {
    std::promise<void> noticed;
    std::atomic<bool> applies = false;
    Watchdog dog(1h, [&noticed] { noticed.set_value(); }, {.limit = 20ms, .applies = [&applies] {
                                                               return applies.load();
                                                           }});
    dog.callStarts();
    auto future = noticed.get_future();
    EXPECT_EQ(future.wait_for(50ms), std::future_status::timeout);
    applies = true;
    EXPECT_EQ(future.wait_for(30s), std::future_status::ready);
}

TEST(Watchdog, StaysQuietWhenCallsReturn) {
    std::atomic<bool> noticed = false;
    {
        Watchdog dog(60s, [&noticed] { noticed = true; });
        dog.callStarts();
        dog.callEnds();
    }
    EXPECT_FALSE(noticed);
}
