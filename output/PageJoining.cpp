#include "output/PageJoining.h"

#include "base/CvOutputLog.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace paperline {

namespace {

// After so many failures in a row every further attempt waits, to leave the processor to others.
constexpr unsigned promptRetries = 10000;
constexpr auto retryPause = std::chrono::milliseconds(5);

void write(const JoinTrace& trace, const char* line) {
    if (trace.operation != nullptr)
        traceLine(trace.operation, line);
}

} // namespace

std::vector<std::string> sortedNames(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::vector<std::string>> joinPages(PageJoiner& joiner,
                                                  const std::string& folder,
                                                  const std::vector<std::string>& names,
                                                  UnreadablePages unreadable,
                                                  const JoinTrace& trace) {
    std::vector<std::string> leftOut;
    unsigned failuresInARow = 0;
    for (size_t i = 0; i < names.size();) {
        write(trace, trace.loading);
        switch (joiner.add(folder + "/" + names[i])) {
        case PageJoiner::Added::yes:
            for (const char* line : trace.added)
                write(trace, line);
            failuresInARow = 0;
            ++i;
            break;
        case PageJoiner::Added::outputFailed:
            return std::nullopt;
        case PageJoiner::Added::unreadable:
            write(trace, trace.unreadable);
            if (unreadable == UnreadablePages::leftOut)
                leftOut.push_back(names[i++]);
            else if (++failuresInARow > promptRetries)
                std::this_thread::sleep_for(retryPause);
            break;
        }
    }
    return leftOut;
}

} // namespace paperline
