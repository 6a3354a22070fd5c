// What happens around the joining of a multi-page file: its final name, its report, and the pages
// of a file that did not come to be.
#include "app/AppDelegate.h"
#include "app/CvOutputLog.h"
#include "output/FileFormats.h"
#include "output/PageNaming.h"
#include "output/StagedPages.h"
#include "platform/DatePatterns.h"
#include "platform/Files.h"
#include "platform/Host.h"
#include "platform/Places.h"

#include <algorithm>

namespace paperline {

namespace {

constexpr const char* keptFolderName = "Kept Pages";

std::string folderNameForNow() {
    return formatDate({.secondsSinceEpoch = host().secondsSinceEpoch(),
                       .localeIdentifier = host().localeIdentifier(),
                       .timeZone = {}},
                      "yyyy-MM-dd HH.mm.ss");
}

// The next free number for the batch's file. The counter has already passed the batch, and passes
// the new number too.
std::string nextTargetPath(AppDelegate& controller) {
    const FileFormat* format = fileFormatOf(controller.multiPageFile.fileFormat);
    const PageNamePattern pattern{controller.createFolerprofileFolderName,
                                  controller.saveImageName,
                                  format != nullptr ? format->extension : "",
                                  true};
    const PageName name =
        findPageName(pattern,
                     controller.currentPage,
                     {.testCollisions = true, .fileExists = fileExists, .announce = {}});
    controller.currentPage = name.counter + 1;
    return name.path;
}

} // namespace

void AppDelegate::keepStagedPages() {
    TraceScope trace("keepStagedPages");
    const KeptPages kept = keepPages(scratchPath(stagingFolderName),
                                     appendPathComponent(userDataFolder(), keptFolderName),
                                     folderNameForNow());
    if (!kept.folder.empty())
        showPagesKeptMessage(kept.folder);
}

bool AppDelegate::moveJoinedFile(const std::string& joinedName) {
    TraceScope trace("moveJoinedFile");
    const std::string joined = scratchPath(joinedName);
    while (!moveFile(joined, multiPageTargetPath)) {
        if (!fileExists(joined) || !fileExists(multiPageTargetPath))
            return false;
        const std::string next = nextTargetPath(*this);
        std::replace(imageFilePath.begin(), imageFilePath.end(), multiPageTargetPath, next);
        multiPageTargetPath = next;
    }
    return true;
}

void AppDelegate::finishMultiPageFile() {
    TraceScope trace("finishMultiPageFile");
    const std::string staging = scratchPath(stagingFolderName);
    for (const std::string& page : folderEntries(staging))
        removePath(appendPathComponent(staging, page));
    multiPageFile.path = multiPageTargetPath;
    if (savedFileObserver && multiPageFile.pages > 0)
        savedFileObserver(multiPageFile);
    multiPageFile = {};
}

} // namespace paperline
