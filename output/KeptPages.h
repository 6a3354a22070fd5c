// Staged pages that are in no file: they belong to the user, and are moved to the user's folder.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace paperline {

struct KeptPages {
    std::string folder;     // of the pages moved; empty when there are none
    std::string leftFolder; // of the pages that could not be moved; empty when there are none
    size_t moved = 0;
    size_t failed = 0;
};

// ".../Kept Pages/2026-01-16 15.03.27" below the user's data folder.
std::string keptFolderForNow();

// Moves every file of the folder to `keptFolder`, or to "`keptFolder` 2", ... when that exists.
// Without a file no folder is created.
[[nodiscard]] KeptPages keepPages(const std::string& folder, const std::string& keptFolder);

// The same for the staging folder. Because the next batch needs it empty, it is renamed when pages
// are left in it, if possible.
[[nodiscard]] KeptPages keepStaged(const std::string& stagingFolder, const std::string& keptFolder);

// The same for the staging folder and all that were renamed.
[[nodiscard]] std::vector<KeptPages> keepAllPages(const std::string& stagingFolder,
                                                  const std::string& keptFolder);

// Removes everything around the staging folder except pages. False when something is left.
bool removeAllButPages(const std::string& stagingFolder);

} // namespace paperline
