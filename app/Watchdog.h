// Ends a process whose data source hangs in a call: a thread of its own looks at the clock, because
// the main thread is the one that hangs.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace paperline {

// A shorter limit, in force from the moment that `isWanted` is true. Asked on the watchdog's
// thread.
struct Hurry {
    std::chrono::milliseconds limit{0};
    std::function<bool()> isWanted;
};

class Watchdog {
public:
    // `barked` runs once, on the watchdog's thread, when a call has been under way for the limit.
    Watchdog(std::chrono::milliseconds limit, std::function<void()> barked, Hurry hurry = {});
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // Any thread; calls do not nest.
    void callStarts();
    void callEnds();

private:
    void watch();
    std::chrono::milliseconds limit() const;

    const std::chrono::milliseconds limit_;
    const Hurry hurry_;
    const std::function<void()> barked_;
    std::atomic<int64_t> startedAt_{0}; // steady clock, milliseconds; 0: no call is under way
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace paperline
