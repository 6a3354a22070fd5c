// Scratch folders that belong to one process each. A lock that ends with the process, however that
// ends, tells them from those that nobody uses any more.
#pragma once

#include "platform/files/Descriptor.h"

#include <optional>
#include <string>
#include <vector>

namespace paperline {

// Nobody else touches the folder while this lives.
struct ProcessScratch {
    std::string folder;
    Descriptor lock;
};

// Makes a private folder of a fresh name in `parent`. Nothing, with `error` saying why, when it
// cannot be made or locked.
[[nodiscard]] std::optional<ProcessScratch> makeProcessScratch(const std::string& parent,
                                                               std::string& error);

// This user's folders in `parent` whose processes have ended. They are the caller's now.
[[nodiscard]] std::vector<ProcessScratch> takeAbandonedScratch(const std::string& parent);

} // namespace paperline
