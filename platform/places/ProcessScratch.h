// Scratch folders of one process each. A lock file, held while the process lives, shows which
// folders were left behind.
#pragma once

#include "platform/files/Descriptor.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline {

// Other processes leave the folder alone while this object lives.
struct ProcessScratch {
    std::string folder;
    Descriptor lock;
};

// Creates and locks a private folder in `parent`. On failure `error` says why.
[[nodiscard]] std::optional<ProcessScratch> makeProcessScratch(const std::string& parent,
                                                               std::string& error);

// Locks this user's folders in `parent` whose processes have ended.
[[nodiscard]] std::vector<ProcessScratch> takeAbandonedScratch(const std::string& parent);

} // namespace paperline
