// The end of a batch: joins the file of several pages and keeps the pages that are in no file.
#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "output/JoinedFiles.h"
#include "output/KeptPages.h"
#include "output/PageNaming.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/files/WriteFailure.h"
#include "platform/places/Places.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

namespace paperline {

namespace {

constexpr const char* joinedPagesName = "/tmp/CorvaneTempImage/JoinedPages";

// The next free number for the batch's file. The counter moves past it.
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

// The page list cannot be built with paths of a file that was never written.
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

bool reportNoSpace(AppDelegate& controller, const std::string& path, const std::string& reason) {
    reportUnwritten("joinMultiPageFile", {PageWriteResult::notOpened, path, reason});
    controller.showNoEnoughDiskSpaceMessage();
    return false;
}

// False ends the scan. Only -2 has a message, and one joiner reports a missing file by no code.
bool isJoined(AppDelegate& controller, const JoinOutcome& joined, const std::string& path) {
    if (joined.code == -2)
        return reportNoSpace(controller, path, joined.reason);
    if (!joined.reason.empty())
        reportUnwritten("joinMultiPageFile", {PageWriteResult::notOpened, path, joined.reason});
    return joined.code >= 0;
}

// Empties the staging folder of the pages that are in their file. If possible in one step, before
// they are deleted: when the process ends meanwhile, the next one must not keep them as unsaved.
void setJoinedPagesAside(const std::vector<std::string>& leftOut) {
    const std::string staging = scratchPath(stagingFolderName);
    const std::string aside = scratchPath(joinedPagesName);
    removePath(aside);
    if (leftOut.empty() && moveScratchFile(staging, aside)) {
        if (!createPrivateFolder(staging))
            traceText("temporary folder not made", staging);
        return;
    }
    for (const std::string& page : folderEntries(staging))
        if (std::find(leftOut.begin(), leftOut.end(), page) == leftOut.end())
            removePath(appendPathComponent(staging, page));
}

// A name taken meanwhile makes it the next free number, also in the page list. Empty, or why the
// file could not be moved.
std::string moveToTarget(AppDelegate& controller, const std::string& joined) {
    TraceScope trace("moveJoinedFile");
    while (!moveFile(joined, multiPageTargetPath)) {
        if (errno != EEXIST)
            return writeFailureText(errno);
        const std::string next = nextTargetPath(controller);
        std::vector<std::string>& paths = controller.imageFilePath;
        std::replace(paths.begin(), paths.end(), multiPageTargetPath, next);
        multiPageTargetPath = next;
    }
    return {};
}

void finishFile(AppDelegate& controller, const std::vector<std::string>& leftOut) {
    TraceScope trace("finishMultiPageFile");
    setJoinedPagesAside(leftOut);
    SavedFile file = std::exchange(controller.multiPageFile, {});
    file.pages -= static_cast<int>(leftOut.size());
    file.path = multiPageTargetPath;
    if (controller.savedFileObserver && file.pages > 0)
        controller.savedFileObserver(file);
    removePath(scratchPath(joinedPagesName));
}

bool placeFile(AppDelegate& controller, const JoinOutcome& joined, const char* joinedName) {
    if (!isJoined(controller, joined, multiPageTargetPath))
        return false;
    const std::string path = scratchPath(joinedName);
    if (!fileExists(path))
        return true;
    const std::string failure = moveToTarget(controller, path);
    if (!failure.empty())
        return reportNoSpace(controller, multiPageTargetPath, failure);
    if (controller.profileFileformatSelect == formatMultiPagePdf)
        controller.replacePDFProducer(multiPageTargetPath, controller.scannerName);
    finishFile(controller, joined.leftOut);
    return true;
}

// The copy that the page list shows is deleted with the program's scratch folder. An earlier run
// may have left one of the same number.
bool placeListCopy(AppDelegate& controller) {
    const std::string joined = scratchPath(joinedTiffName);
    if (!isJoined(
            controller, joinTiffAt300Dpi(scratchPath(listStagingFolderName)), multiTiffListPath))
        return false;
    if (!fileExists(joined))
        return true;
    removePath(multiTiffListPath);
    return moveScratchFile(joined, multiTiffListPath) ||
           reportNoSpace(controller, multiTiffListPath, writeFailureText(errno));
}

} // namespace

void AppDelegate::keepStagedPages() {
    TraceScope trace("keepStagedPages");
    noteKeptPages(*this, keepStaged(scratchPath(stagingFolderName), keptFolderForNow()));
    dropMissingBatchPaths(*this);
}

void AppDelegate::keepPagesOfEarlierRuns() {
    TraceScope trace("keepPagesOfEarlierRuns");
    const std::string kept = keptFolderForNow();
    for (const KeptPages& pages : keepAllPages(scratchPath(stagingFolderName), kept))
        noteKeptPages(*this, pages);
    const std::string stagingBelowRoot =
        std::string(stagingFolderName).substr(std::string_view(scratchVolume).size());
    for (const ProcessScratch& scratch : takeAbandonedScratchRoots()) {
        const std::string abandoned = scratch.folder + stagingBelowRoot;
        for (const KeptPages& pages : keepAllPages(abandoned, kept))
            noteKeptPages(*this, pages);
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

bool AppDelegate::joinMultiPageFile() {
    const FileFormat* format = fileFormatOf(profileFileformatSelect);
    if (format == nullptr || !format->isMultiPage)
        return true;
    TraceScope trace("joinMultiPageFile");
    const std::string staging = scratchPath(stagingFolderName);
    if (format->code == formatMultiPagePdf)
        return placeFile(*this, joinPdf(staging), joinedPdfName);
    const JoinOutcome joined = brandProfile(gBrandNumber).copiesTiffPages
                                   ? joinTiffUnchanged(staging)
                                   : joinTiffAt300Dpi(staging);
    return placeFile(*this, joined, joinedTiffName) && placeListCopy(*this);
}

} // namespace paperline
