#include "platform/process/ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace paperline {

unsigned processorCount() {
    return std::max(1U, std::thread::hardware_concurrency());
}

void parallelFor(size_t parts,
                 unsigned workers,
                 const std::function<void(size_t part, unsigned worker)>& work) {
    std::atomic<size_t> next{0};
    const auto takeParts = [&](unsigned worker) {
        for (size_t part = next++; part < parts; part = next++)
            work(part, worker);
    };
    std::vector<std::thread> helpers;
    const size_t wanted = std::min<size_t>(workers, parts);
    helpers.reserve(wanted);
    try {
        for (unsigned worker = 1; worker < wanted; ++worker)
            helpers.emplace_back(takeParts, worker);
    } catch (const std::system_error&) {
        // The threads that run take the parts of the missing ones.
    }
    takeParts(0);
    for (std::thread& helper : helpers)
        helper.join();
}

bool parallelForAll(size_t parts,
                    unsigned workers,
                    const std::function<bool(size_t part, unsigned worker)>& work) {
    std::atomic<bool> succeeded{true};
    parallelFor(parts, workers, [&](size_t part, unsigned worker) {
        try {
            if (succeeded && !work(part, worker))
                succeeded = false;
        } catch (const std::bad_alloc&) {
            succeeded = false;
        }
    });
    return succeeded;
}

} // namespace paperline
