// What the joiners of multi-page files have in common.
#pragma once

#include <string>

namespace paperline {

// Gathers page files into one file, which appears under its name when it is finished.
class PageJoiner {
public:
    enum class Added {
        yes,
        unreadable,   // nothing was added, and the page may be tried again
        outputFailed, // the file cannot be completed any more
    };

    PageJoiner() = default;
    virtual ~PageJoiner() = default;
    PageJoiner(const PageJoiner&) = delete;
    PageJoiner& operator=(const PageJoiner&) = delete;

    // Appends a page (of a TIFF file the first one).
    [[nodiscard]] virtual Added add(const std::string& pageFile) = 0;
    // Replaces what has the file's name. On failure that is kept, and nothing else is left.
    [[nodiscard]] virtual bool finish() = 0;

    // Why the last call failed.
    const std::string& failure() const { return failure_; }

protected:
    Added unreadable(std::string why) { return fail(Added::unreadable, std::move(why)); }
    Added outputFailed(std::string why) { return fail(Added::outputFailed, std::move(why)); }

    std::string failure_;

private:
    Added fail(Added result, std::string why) {
        failure_ = std::move(why);
        return result;
    }
};

} // namespace paperline
