#include "app/Watchdog.h"

#include <gtest/gtest.h>

#include <future>

using namespace paperline;
using namespace std::chrono_literals;

TEST(Watchdog, BarksWhenACallStaysAway) {
    std::promise<void> barked;
    Watchdog dog(20ms, [&barked] { barked.set_value(); });
    dog.callStarts();
    EXPECT_EQ(barked.get_future().wait_for(30s), std::future_status::ready);
}

TEST(Watchdog, BarksEarlierInAHurry) {
    std::promise<void> barked;
    std::atomic<bool> hurry = false;
    Watchdog dog(1h, [&barked] { barked.set_value(); }, {.limit = 20ms, .isWanted = [&hurry] {
                                                             return hurry.load();
                                                         }});
    dog.callStarts();
    auto future = barked.get_future();
    EXPECT_EQ(future.wait_for(50ms), std::future_status::timeout);
    hurry = true;
    EXPECT_EQ(future.wait_for(30s), std::future_status::ready);
}

TEST(Watchdog, StaysQuietWhenCallsReturn) {
    std::atomic<bool> barked = false;
    {
        Watchdog dog(60s, [&barked] { barked = true; });
        dog.callStarts();
        dog.callEnds();
    }
    EXPECT_FALSE(barked);
}
