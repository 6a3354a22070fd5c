#include "output/PageNaming.h"

#include <cstdio>
#include <utility>

namespace paperline {

namespace {

// The counter prints as the platform's signed 32-bit format does.
std::string numbered(uint32_t counter) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "_%05d", static_cast<int32_t>(counter));
    return digits;
}

} // namespace

std::string pageBasePath(const PageNamePattern& pattern, uint32_t counter) {
    return pattern.folder + "/" + pattern.prefix + numbered(counter);
}

std::string stagedPageName(uint32_t page, const std::string& extension) {
    return "/Image" + numbered(page) + extension;
}

PageName findPageName(const PageNamePattern& pattern, uint32_t counter, const NameSearch& search) {
    while (true) {
        std::string base = pageBasePath(pattern, counter);
        if (search.announce)
            search.announce(base);
        std::string path = base + pattern.extension;
        if (!search.testCollisions || !search.fileExists(path))
            return {std::move(base), std::move(path), counter};
        ++counter;
    }
}

} // namespace paperline
