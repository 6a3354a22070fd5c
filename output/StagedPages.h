// Pages staged for a multi-page file that never came to be: they are the user's, and are kept.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace paperline {

// Below the user's data folder; inside it a folder for each time, named by this date pattern.
inline constexpr const char* keptPagesFolderName = "Kept Pages";
inline constexpr const char* keptPagesNamePattern = "yyyy-MM-dd HH.mm.ss";

struct KeptPages {
    std::string folder;     // where they are; empty when nothing was kept
    std::string leftFolder; // where those are that could not be moved; empty when there are none
    size_t moved = 0;
    size_t failed = 0;
};

// Moves every file of the folder into a fresh folder `keptRoot`/`name` (or "`name` 2", ...) of this
// user's. Nothing is made when there are no pages. What cannot be moved stays in its folder.
[[nodiscard]] KeptPages
keepPages(const std::string& folder, const std::string& keptRoot, const std::string& name);

// The same for the staging folder, which the next batch needs: pages that stay are set aside with
// it, under a new name beside it. `leftFolder` is the staging folder itself when not even that
// could be done.
[[nodiscard]] KeptPages
keepStaged(const std::string& stagingFolder, const std::string& keptRoot, const std::string& name);

// Keeps the pages of the staging folder and of every folder set aside earlier beside it.
[[nodiscard]] std::vector<KeptPages> keepAllPages(const std::string& stagingFolder,
                                                  const std::string& keptRoot,
                                                  const std::string& name);

// Removes the folder around the staging folder with all it holds but pages. False: there are some,
// or something else could not be removed.
bool removeAllButPages(const std::string& stagingFolder);

} // namespace paperline
