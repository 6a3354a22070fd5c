#include "output/PageJoining.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace paperline {

namespace {

// Retries in a row before each further one waits a little, so that waiting does not take a whole
// processor.
constexpr unsigned promptRetries = 10000;
constexpr auto retryPause = std::chrono::milliseconds(5);

void tell(const std::function<void()>& step) {
    if (step)
        step();
}

PageJoiner::Added
addEntry(PageJoiner& joiner, const std::string& pageFile, const JoinSteps& steps) {
    tell(steps.loading);
    const PageJoiner::Added result = joiner.add(pageFile);
    if (result == PageJoiner::Added::yes) {
        tell(steps.loaded);
        tell(steps.added);
    } else if (result == PageJoiner::Added::unreadable) {
        tell(steps.retrying);
    }
    return result;
}

} // namespace

std::vector<std::string> sortedNames(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

bool joinRetrying(PageJoiner& joiner,
                  const std::string& folder,
                  const std::vector<std::string>& names,
                  const JoinSteps& steps) {
    unsigned failuresInARow = 0;
    for (size_t i = 0; i < names.size();) {
        switch (addEntry(joiner, folder + "/" + names[i], steps)) {
        case PageJoiner::Added::yes:
            failuresInARow = 0;
            ++i;
            break;
        case PageJoiner::Added::outputFailed:
            return false;
        case PageJoiner::Added::unreadable:
            if (failuresInARow < promptRetries)
                ++failuresInARow;
            else
                std::this_thread::sleep_for(retryPause);
            break;
        }
    }
    return true;
}

std::optional<std::vector<std::string>> joinSkipping(PageJoiner& joiner,
                                                     const std::string& folder,
                                                     const std::vector<std::string>& names,
                                                     const JoinSteps& steps) {
    std::vector<std::string> leftOut;
    for (const std::string& name : names) {
        const PageJoiner::Added result = addEntry(joiner, folder + "/" + name, steps);
        if (result == PageJoiner::Added::outputFailed)
            return std::nullopt;
        if (result == PageJoiner::Added::unreadable)
            leftOut.push_back(name);
    }
    return leftOut;
}

} // namespace paperline
