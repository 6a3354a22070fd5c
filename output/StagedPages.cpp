#include "output/StagedPages.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"

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

// "MultiImage 2026-01-16 15.03.27": a name that no batch uses, recognised by what it starts with.
bool isSetAside(const std::string& entry, const std::string& stagingFolder) {
    return entry.starts_with(lastPathComponent(stagingFolder) + " ");
}

// A rename needs no room on the disk. Where the pages are afterwards.
std::string setAside(const std::string& stagingFolder, const std::string& name) {
    for (int number = 1; number <= folderTries; ++number) {
        std::string place = stagingFolder + " " + name;
        if (number > 1)
            place += " " + std::to_string(number);
        if (fileExists(place))
            continue;
        return moveFile(stagingFolder, place) ? place : stagingFolder;
    }
    return stagingFolder;
}

// Neither a link nor a stranger's: what lies below may be taken for this program's.
bool isOwnFolder(const std::string& folder) {
    return ownedByUserOrRoot(folder) && folderExists(folder);
}

} // namespace

KeptPages
keepPages(const std::string& folder, const std::string& keptRoot, const std::string& name) {
    const std::vector<std::string> pages = folderEntries(folder);
    KeptPages result;
    if (pages.empty())
        return result;
    const std::string kept = makeFreshFolder(keptRoot, name);
    if (kept.empty()) {
        result.failed = pages.size();
        result.leftFolder = folder;
        return result;
    }
    for (const std::string& page : pages) {
        const bool moved =
            moveFile(appendPathComponent(folder, page), appendPathComponent(kept, page));
        ++(moved ? result.moved : result.failed);
    }
    if (result.moved > 0)
        result.folder = kept;
    else
        removePath(kept);
    if (result.failed > 0)
        result.leftFolder = folder;
    return result;
}

KeptPages
keepStaged(const std::string& stagingFolder, const std::string& keptRoot, const std::string& name) {
    KeptPages result = keepPages(stagingFolder, keptRoot, name);
    if (result.failed > 0)
        result.leftFolder = setAside(stagingFolder, name);
    return result;
}

std::vector<KeptPages> keepAllPages(const std::string& stagingFolder,
                                    const std::string& keptRoot,
                                    const std::string& name) {
    const std::string root = folderOfPath(stagingFolder);
    std::vector<KeptPages> results;
    if (!isOwnFolder(root))
        return results;
    for (const std::string& entry : folderEntries(root))
        if (isSetAside(entry, stagingFolder))
            results.push_back(keepPages(appendPathComponent(root, entry), keptRoot, name));
    results.push_back(keepStaged(stagingFolder, keptRoot, name));
    return results;
}

bool removeAllButPages(const std::string& stagingFolder) {
    const std::string root = folderOfPath(stagingFolder);
    if (!isOwnFolder(root))
        return removePath(root);
    bool isEmpty = true;
    for (const std::string& entry : folderEntries(root)) {
        const std::string path = appendPathComponent(root, entry);
        const bool mayHoldPages = path == stagingFolder || isSetAside(entry, stagingFolder);
        const bool holdsPages = mayHoldPages && !folderEntries(path).empty();
        isEmpty = !holdsPages && removePath(path) && isEmpty;
    }
    return isEmpty && removePath(root);
}

} // namespace paperline
