// The order and the retries of joining staged pages; the joiner itself knows the format.
#pragma once

#include "output/PageCodecs.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

// Plain, case-sensitive order of the characters; digits are characters, so "Image_10" stands before
// "Image_2".
std::vector<std::string> sortedNames(std::vector<std::string> names);

// Told the steps of one entry, as the trace names them; may be empty.
struct JoinSteps {
    std::function<void()> loading;
    std::function<void()> loaded;
    std::function<void()> retrying; // or skipping
    std::function<void()> added;
};

// Adds every name of the folder in the order given. An entry that cannot be loaded is tried again,
// without end: the staging folder holds nothing but pages, so it can only be a passing trouble.
// False when the output failed.
[[nodiscard]] bool joinRetrying(PageJoiner& joiner,
                                const std::string& folder,
                                const std::vector<std::string>& names,
                                const JoinSteps& steps);

// The same, but an entry that cannot be loaded is left out. The names left out; nothing when the
// output failed.
[[nodiscard]] std::optional<std::vector<std::string>>
joinSkipping(PageJoiner& joiner,
             const std::string& folder,
             const std::vector<std::string>& names,
             const JoinSteps& steps);

} // namespace paperline
