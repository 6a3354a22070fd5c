// Pages staged for a multi-page file that never came to be: they are the user's, and are kept.
#pragma once

#include <cstddef>
#include <string>

namespace paperline {

// Below the user's data folder; inside it a folder for each time, named by this date pattern.
inline constexpr const char* keptPagesFolderName = "Kept Pages";
inline constexpr const char* keptPagesNamePattern = "yyyy-MM-dd HH.mm.ss";

struct KeptPages {
    std::string folder; // where they are; empty when nothing was kept
    size_t moved = 0;
    size_t failed = 0; // still in the staging folder
};

// Moves every file of the staging folder into a fresh folder `keptRoot`/`name` (or "`name` 2", ...)
// of this user's. Nothing is made when there are no pages.
[[nodiscard]] KeptPages
keepPages(const std::string& stagingFolder, const std::string& keptRoot, const std::string& name);

} // namespace paperline
