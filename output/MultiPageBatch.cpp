// What happens around the joining of a multi-page file: its final name, its report, and the pages
// of a file that did not come to be.
#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "output/PageNaming.h"
#include "output/ScratchNames.h"
#include "output/StagedPages.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace paperline {

namespace {

constexpr const char* joinedPagesName = "/tmp/CorvaneTempImage/JoinedPages";

std::string keptRoot() {
    return appendPathComponent(userDataFolder(), keptPagesFolderName);
}

std::string folderNameForNow() {
    return formatDate({.secondsSinceEpoch = host().secondsSinceEpoch(),
                       .localeIdentifier = host().localeIdentifier(),
                       .timeZone = {}},
                      keptPagesNamePattern);
}

// Also by a link that leads nowhere.
bool isNameTaken(const std::string& path) {
    if (fileExists(path))
        return true;
    const std::vector<std::string> names = folderEntries(folderOfPath(path));
    return std::find(names.begin(), names.end(), lastPathComponent(path)) != names.end();
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

// Paths of a batch that never became a file would fail the next building of rows.
void dropMissingBatchPaths(AppDelegate& controller) {
    std::vector<std::string>& paths = controller.imageFilePath;
    const auto isMissing = [](const std::string& path) {
        return (path == multiPageTargetPath || path == multiTiffListPath) && !fileExists(path);
    };
    while (paths.size() > static_cast<size_t>(std::max(iNextImage, 0)) && isMissing(paths.back()))
        paths.pop_back();
}

void noteKeptPages(AppDelegate& controller, const KeptPages& kept) {
    for (const std::string& folder : {kept.folder, kept.leftFolder})
        if (!folder.empty())
            controller.keptPagesFolders.push_back(folder);
}

// A joiner's result below 0 ends the scan; only a full disk has a message.
bool isJoined(AppDelegate& controller, int32_t result) {
    if (result == -2)
        controller.showNoEnoughDiskSpaceMessage();
    return result >= 0;
}

// The staged pages that are in their file now. In one step, as long as the joiner left none out:
// removing many takes a while, and whatever ends the process meanwhile must not leave some that
// would be kept as pages without a file.
void setJoinedPagesAside(const std::vector<std::string>& pagesLeftOut) {
    const std::string staging = scratchPath(stagingFolderName);
    const std::string aside = scratchPath(joinedPagesName);
    removePath(aside);
    if (pagesLeftOut.empty() && moveScratchFile(staging, aside)) {
        if (!createPrivateFolder(staging))
            traceText("temporary folder not made", staging);
        return;
    }
    for (const std::string& page : folderEntries(staging))
        if (std::find(pagesLeftOut.begin(), pagesLeftOut.end(), page) == pagesLeftOut.end())
            removePath(appendPathComponent(staging, page));
}

// A join that gave no file, and said nothing, leaves nothing to be moved.
bool moveToTarget(AppDelegate& controller, const char* joinedName) {
    if (!fileExists(scratchPath(joinedName)))
        return true;
    if (!controller.moveJoinedFile(joinedName)) {
        controller.showNoEnoughDiskSpaceMessage();
        return false;
    }
    if (controller.profileFileformatSelect == formatMultiPagePdf)
        controller.replacePDFProducer(multiPageTargetPath, controller.scannerName);
    controller.finishMultiPageFile();
    return true;
}

bool joinPdf(AppDelegate& controller) {
    return isJoined(controller, controller.CreateMPDF(scratchPath(stagingFolderName))) &&
           moveToTarget(controller, joinedPdfName);
}

// The copy that the page list shows; it ends with the program, unlike the user's file. An older one
// of the same number may stand there: the counter starts anew with the program.
bool joinTiffForList(AppDelegate& controller) {
    const std::string joined = scratchPath(joinedTiffName);
    if (!isJoined(controller, controller.mergeTiffImage(scratchPath(listStagingFolderName))))
        return false;
    if (!fileExists(joined))
        return true;
    removePath(multiTiffListPath);
    if (moveScratchFile(joined, multiTiffListPath))
        return true;
    controller.showNoEnoughDiskSpaceMessage();
    return false;
}

bool joinTiff(AppDelegate& controller) {
    const std::string staging = scratchPath(stagingFolderName);
    const int32_t result = brandProfile(gBrandNumber).copiesTiffPages
                               ? controller.mergeTiffImageEx(staging)
                               : controller.mergeTiffImage(staging);
    return isJoined(controller, result) && moveToTarget(controller, joinedTiffName) &&
           joinTiffForList(controller);
}

} // namespace

void AppDelegate::keepStagedPages() {
    TraceScope trace("keepStagedPages");
    noteKeptPages(*this,
                  keepStaged(scratchPath(stagingFolderName), keptRoot(), folderNameForNow()));
    dropMissingBatchPaths(*this);
}

void AppDelegate::keepPagesOfEarlierRuns() {
    TraceScope trace("keepPagesOfEarlierRuns");
    const std::string name = folderNameForNow();
    const std::string staging = scratchPath(stagingFolderName);
    for (const KeptPages& kept : keepAllPages(staging, keptRoot(), name))
        noteKeptPages(*this, kept);
    const std::string stagingBelowRoot =
        std::string(stagingFolderName).substr(std::string_view(scratchVolume).size());
    for (const ProcessScratch& scratch : takeAbandonedScratchRoots()) {
        const std::string abandoned = scratch.folder + stagingBelowRoot;
        for (const KeptPages& kept : keepAllPages(abandoned, keptRoot(), name))
            noteKeptPages(*this, kept);
        if (removeAllButPages(abandoned))
            removePath(scratch.folder);
    }
}

void AppDelegate::tellKeptPages() {
    TraceScope trace("tellKeptPages");
    std::string folders;
    for (const std::string& folder : std::exchange(keptPagesFolders, {}))
        folders += (folders.empty() ? "" : "\n") + folder;
    if (!folders.empty())
        showPagesKeptMessage(folders);
}

bool AppDelegate::moveJoinedFile(const std::string& joinedName) {
    TraceScope trace("moveJoinedFile");
    const std::string joined = scratchPath(joinedName);
    while (!moveFile(joined, multiPageTargetPath)) {
        if (!fileExists(joined) || !isNameTaken(multiPageTargetPath))
            return false;
        const std::string next = nextTargetPath(*this);
        std::replace(imageFilePath.begin(), imageFilePath.end(), multiPageTargetPath, next);
        multiPageTargetPath = next;
    }
    return true;
}

void AppDelegate::finishMultiPageFile() {
    TraceScope trace("finishMultiPageFile");
    setJoinedPagesAside(pagesLeftOut);
    multiPageFile.pages -= static_cast<int>(pagesLeftOut.size());
    multiPageFile.path = multiPageTargetPath;
    if (savedFileObserver && multiPageFile.pages > 0)
        savedFileObserver(multiPageFile);
    multiPageFile = {};
    removePath(scratchPath(joinedPagesName));
}

bool AppDelegate::joinMultiPageFile() {
    const FileFormat* format = fileFormatOf(profileFileformatSelect);
    if (format == nullptr || !format->isMultiPage)
        return true;
    TraceScope trace("joinMultiPageFile");
    pagesLeftOut.clear();
    return format->code == formatMultiPagePdf ? joinPdf(*this) : joinTiff(*this);
}

} // namespace paperline
