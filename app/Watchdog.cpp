#include "app/Watchdog.h"

#include <algorithm>
#include <utility>

namespace paperline {
namespace {

int64_t nowMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

Watchdog::Watchdog(std::chrono::milliseconds limit,
                   std::function<void()> onHang,
                   ShorterLimit shorter)
    : limit_(limit), shorter_(std::move(shorter)), onHang_(std::move(onHang)),
      thread_([this] { watch(); }) {}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void Watchdog::callStarts() {
    startedAt_ = nowMilliseconds();
}

void Watchdog::callEnds() {
    startedAt_ = 0;
}

std::chrono::milliseconds Watchdog::limit() const {
    return shorter_.applies && shorter_.applies() ? std::min(limit_, shorter_.limit) : limit_;
}

void Watchdog::watch() {
    const std::chrono::milliseconds period =
        std::clamp(limit_ / 10, std::chrono::milliseconds(1), std::chrono::milliseconds(500));
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, period, [this] { return ending_; })) {
        const int64_t started = startedAt_;
        if (started != 0 && nowMilliseconds() - started >= limit().count()) {
            onHang_();
            return;
        }
    }
}

} // namespace paperline
