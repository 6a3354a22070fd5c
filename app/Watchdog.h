// Notices on a thread of its own that the main thread hangs in a call to the data source.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace paperline {

// A limit that takes the place of a longer one while `applies` answers true, on the watchdog's
// thread.
struct ShorterLimit {
    std::chrono::milliseconds limit{0};
    std::function<bool()> applies;
};

class Watchdog {
public:
    // `onHang` runs once, on the watchdog's thread, when a call has been under way for the limit.
    Watchdog(std::chrono::milliseconds limit,
             std::function<void()> onHang,
             ShorterLimit shorter = {});
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // On any thread; calls do not nest.
    void callStarts();
    void callEnds();

private:
    void watch();
    std::chrono::milliseconds limit() const;

    const std::chrono::milliseconds limit_;
    const ShorterLimit shorter_;
    const std::function<void()> onHang_;
    std::atomic<int64_t> startedAt_{0}; // steady clock, milliseconds; 0: no call is under way
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace paperline
