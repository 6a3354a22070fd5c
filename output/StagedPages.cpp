#include "output/StagedPages.h"

#include "platform/Files.h"

#include <vector>

namespace paperline {

namespace {

constexpr int folderTries = 1000;

// Empty when no folder could be made.
std::string makeFreshFolder(const std::string& root, const std::string& name) {
    if (!createFolderWithParents(root))
        return {};
    for (int number = 1; number <= folderTries; ++number) {
        const std::string folder =
            appendPathComponent(root, number == 1 ? name : name + " " + std::to_string(number));
        if (!fileExists(folder) && createFolder(folder))
            return folder;
    }
    return {};
}

} // namespace

KeptPages
keepPages(const std::string& stagingFolder, const std::string& keptRoot, const std::string& name) {
    const std::vector<std::string> pages = folderEntries(stagingFolder);
    KeptPages result;
    if (pages.empty())
        return result;
    const std::string folder = makeFreshFolder(keptRoot, name);
    if (folder.empty()) {
        result.failed = pages.size();
        return result;
    }
    for (const std::string& page : pages) {
        const bool moved =
            moveFile(appendPathComponent(stagingFolder, page), appendPathComponent(folder, page));
        ++(moved ? result.moved : result.failed);
    }
    if (result.moved > 0)
        result.folder = folder;
    else
        removePath(folder);
    return result;
}

} // namespace paperline
