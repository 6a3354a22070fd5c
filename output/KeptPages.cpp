#include "output/KeptPages.h"

#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"

namespace paperline {

namespace {

constexpr int folderTries = 1000;

// "Folder", "Folder 2", "Folder 3", ...
std::string numbered(const std::string& folder, int number) {
    return number == 1 ? folder : folder + " " + std::to_string(number);
}

// Empty when no folder can be created.
std::string createFreeFolder(const std::string& folder) {
    if (!createFolderWithParents(folderOfPath(folder)))
        return {};
    for (int number = 1; number <= folderTries; ++number) {
        const std::string free = numbered(folder, number);
        if (!fileExists(free) && createFolder(free))
            return free;
    }
    return {};
}

// "MultiImage 2026-01-16 15.03.27"
bool isRenamed(const std::string& entry, const std::string& stagingFolder) {
    return entry.starts_with(lastPathComponent(stagingFolder) + " ");
}

// Renaming needs no disk space. The folder's path afterwards.
std::string renameStaging(const std::string& stagingFolder, const std::string& suffix) {
    for (int number = 1; number <= folderTries; ++number) {
        const std::string renamed = numbered(stagingFolder + " " + suffix, number);
        if (!fileExists(renamed))
            return moveFile(stagingFolder, renamed) ? renamed : stagingFolder;
    }
    return stagingFolder;
}

// Only then is its content this program's.
bool isOwnFolder(const std::string& folder) {
    return ownedByUserOrRoot(folder) && folderExists(folder);
}

} // namespace

std::string keptFolderForNow() {
    const std::string now = formatDate({.secondsSinceEpoch = host().secondsSinceEpoch(),
                                        .localeIdentifier = host().localeIdentifier(),
                                        .timeZone = {}},
                                       "yyyy-MM-dd HH.mm.ss");
    return appendPathComponent(userDataFolder(), "Kept Pages/" + now);
}

KeptPages keepPages(const std::string& folder, const std::string& keptFolder) {
    const std::vector<std::string> pages = folderEntries(folder);
    KeptPages result;
    if (pages.empty())
        return result;
    const std::string kept = createFreeFolder(keptFolder);
    if (kept.empty()) {
        result.failed = pages.size();
        result.leftFolder = folder;
        return result;
    }
    for (const std::string& page : pages) {
        const bool moved =
            moveFile(appendPathComponent(folder, page), appendPathComponent(kept, page));
        if (moved)
            ++result.moved;
        else
            ++result.failed;
    }
    if (result.moved > 0)
        result.folder = kept;
    else
        removePath(kept);
    if (result.failed > 0)
        result.leftFolder = folder;
    return result;
}

KeptPages keepStaged(const std::string& stagingFolder, const std::string& keptFolder) {
    KeptPages result = keepPages(stagingFolder, keptFolder);
    if (result.failed > 0)
        result.leftFolder = renameStaging(stagingFolder, lastPathComponent(keptFolder));
    return result;
}

std::vector<KeptPages> keepAllPages(const std::string& stagingFolder,
                                    const std::string& keptFolder) {
    const std::string root = folderOfPath(stagingFolder);
    std::vector<KeptPages> results;
    if (!isOwnFolder(root))
        return results;
    for (const std::string& entry : folderEntries(root))
        if (isRenamed(entry, stagingFolder))
            results.push_back(keepPages(appendPathComponent(root, entry), keptFolder));
    results.push_back(keepStaged(stagingFolder, keptFolder));
    return results;
}

bool removeAllButPages(const std::string& stagingFolder) {
    const std::string root = folderOfPath(stagingFolder);
    if (!isOwnFolder(root))
        return removePath(root);
    bool isEmpty = true;
    for (const std::string& entry : folderEntries(root)) {
        const std::string path = appendPathComponent(root, entry);
        const bool mayHoldPages = path == stagingFolder || isRenamed(entry, stagingFolder);
        const bool holdsPages = mayHoldPages && !folderEntries(path).empty();
        isEmpty = !holdsPages && removePath(path) && isEmpty;
    }
    return isEmpty && removePath(root);
}

} // namespace paperline
