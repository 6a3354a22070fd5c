// Operations of AppDelegate that fetch every pending page by memory transfer, have it saved and end
// the scan, and the memory guard of long scans.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "codecs/bmp/BmpFile.h"
#include "output/PageSaving.h"
#include "output/Resolution.h"
#include "output/ScratchNames.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "twain/FreeMemory.h"
#include "twain/PageTransfer.h"
#include "twain/TWAINHandler.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

bool gHighResolutionScan = false;
int32_t gPageHeightAt300Dpi = 0;

namespace {

constexpr int32_t nothingSaved = -1;
constexpr int32_t notEnoughSpace = -2;

// State of one run of the page loop.
struct Batch {
    int32_t saveResult = 0; // of the last page: 0 or more, or one of the codes above
    uint64_t copiedBytes = 0;
    uint32_t pageNumber = 0;                 // from 1, saved or not
    bool endFailed = false;                  // the source could not end a page
    bool isInterrupted = false;              // the application is to end, and there were more pages
    std::vector<std::string> unwrittenPages; // their writer's code says saved, the disk does not
    PageBuffers buffers;
    PageGuard guard;
};

bool isMultiPageFormat(int32_t code) {
    const FileFormat* format = fileFormatOf(code);
    return format != nullptr && format->isMultiPage;
}

// A folder that cannot be made shows at the first page that is staged in it.
void makeTemporaryFolder(const std::string& folder) {
    if (!createPrivateFolder(folder))
        traceText("temporary folder not made", folder);
}

// False: pages of an earlier batch lie where those of this one would go.
bool prepareStagingFolders() {
    removePath(scratchPath(listStagingFolderName)); // copies
    makeTemporaryFolder(scratchPath(listStagingFolderName));
    const std::string staging = scratchPath(stagingFolderName);
    if (!folderEntries(staging).empty())
        return false;
    removePath(staging);
    makeTemporaryFolder(staging);
    return true;
}

// False: the pages of this batch cannot be staged.
bool prepareBatch(AppDelegate& controller) {
    controller.keepStagedPages(); // of a batch that ended badly, or with the process
    controller.tellKeptPages();
    const std::string root = scratchPath(scratchRootName);
    if (!fileExists(root))
        makeTemporaryFolder(root);
    const bool canStage = prepareStagingFolders();
    for (const char* joined : {joinedPdfName, joinedTiffName})
        removePath(scratchPath(joined));
    controller.changeThumbnailSelect = 0;
    memoryShortage = false;
    firstPageOfBatch = true;
    multiPageTargetPath.clear();
    const FileFormat* format = fileFormatOf(controller.profileFileformatSelect);
    return canStage || controller.mMenuFileSave == 0 || format == nullptr || !format->isStaged();
}

// Turns new paths into rows and shows the newest. Without a window nobody would see them.
void showNewPages(AppDelegate& controller) {
    if (controller.launchOptions().commandLine)
        return;
    const size_t rowsBefore = controller.cellInfos.size();
    controller.GetImageFromImageFolder();
    controller.reloadMainTable();
    if (controller.cellInfos.size() > rowsBefore && controller.nonFileSaveImageInTempFolder == 0)
        controller.selectLastRow();
}

void reportUnsavedPage(AppDelegate& controller, int32_t result) {
    if (result == notEnoughSpace) {
        traceLine("saveXferDatatoMedia Failed(NoEnoughDiskSpace)!!");
        controller.showNoEnoughDiskSpaceMessage();
    } else {
        traceLine("saveXferDatatoMedia Failed(NoImageSave)!!");
        controller.showNoImageSaveMessage();
    }
}

// Once a scan: no page of it may be missing without a word. The command line has its own.
void tellUnwrittenPages(const AppDelegate& controller, const std::vector<std::string>& pages) {
    constexpr size_t mostNamed = 10;
    if (pages.empty() || controller.launchOptions().commandLine)
        return;
    std::string names;
    for (size_t page = 0; page < std::min(pages.size(), mostNamed); ++page)
        names += (page == 0 ? "" : "\n") + pages[page];
    if (pages.size() > mostNamed)
        names += "\n…";
    runAlertPanel({.title = " ",
                   .message = localizedString(gLanguageBundle, "NoSaveImage"),
                   .informativeText = names,
                   .defaultButton = ""});
}

// The command line lists no pages, so that no page can be left out of its list.
void keepMemoryForDisplay(AppDelegate& controller, uint64_t copiedBytes) {
    if (controller.launchOptions().commandLine)
        return;
    if (!memoryShortage && copiedBytes > copiedBytesBeforeMemoryCheck)
        controller.checkmemoryEnough();
    if (memoryShortage)
        controller.dropNewestPath();
}

struct PageFacts {
    TW_IMAGEINFO info{};
    PageLayout layout;
    int32_t horizontalDpi = 0;
    int32_t verticalDpi = 0;
};

void savePage(AppDelegate& controller, Batch& batch, const PageFacts& page) {
    BitmapImageRep& bitmap = *batch.buffers.bitmap();
    const SaveOutcome saved = saveReceivedPage(controller,
                                               {bitmap,
                                                Image(batch.buffers.bitmap()),
                                                bitmap.bitmapData().data(),
                                                reportedDpi(page.info.XResolution),
                                                wholeDpi(static_cast<float>(page.verticalDpi))});
    batch.saveResult = saved.code;
    if (saved.code < 0) {
        reportUnsavedPage(controller, saved.code);
    } else {
        if (saved.write.result != PageWriteResult::complete)
            batch.unwrittenPages.push_back(saved.write.path + ": " + saved.write.reason);
        keepMemoryForDisplay(controller, batch.copiedBytes);
        if (!isMultiPageFormat(controller.profileFileformatSelect) && controller.mMenuFileSave != 0)
            showNewPages(controller);
    }
    memoryShortage = false;
}

// Page layout, when the page can be held in memory at all.
std::optional<PageFacts> holdPage(AppDelegate& controller, Batch& batch, const TW_IMAGEINFO& info) {
    PageFacts page{.info = info,
                   .layout = {},
                   .horizontalDpi = resolutionDpi(info.XResolution),
                   .verticalDpi = resolutionDpi(info.YResolution)};
    gHighResolutionScan = page.horizontalDpi >= highResolutionDpi;
    const std::optional<PageLayout> layout = pageLayout(info);
    if (!layout)
        return std::nullopt;
    page.layout = *layout;
    gPageHeightAt300Dpi = pageHeightAt300Dpi(info.ImageLength, page.horizontalDpi);
    askBufferSizes(*gTWAINHandler);
    const uint64_t bytes = layout->transferBytes;
    if (!isPageAllocatable(bytes, 0) && !isPageAllocatable(bytes, controller.get_free_memory()))
        return std::nullopt;
    if (!batch.buffers.preparePage(*layout))
        return std::nullopt;
    return page;
}

void transferPage(AppDelegate& controller, Batch& batch, const std::optional<TW_IMAGEINFO>& info) {
    controller.showScanningStatus(++batch.pageNumber);
    const std::optional<PageFacts> page = info ? holdPage(controller, batch, *info) : std::nullopt;
    if (!page) {
        controller.showMemoryNotEnoughMessage();
        batch.saveResult = nothingSaved;
        return;
    }
    const ReceivedStrips strips = receiveStrips(*gTWAINHandler, batch.buffers);
    batch.copiedBytes += strips.bytes;
    const bool cancelled = strips.code == twain::TWRC_CANCEL;
    if (strips.isEndless || !batch.guard.admits(strips.rows > 0, cancelled)) {
        batch.saveResult = nothingSaved;
        reportUnsavedPage(controller, batch.saveResult);
        return;
    }
    if (cancelled) {
        controller.mScanSetup = 0;
        controller.enableToolbatItems(true);
        return;
    }
    savePage(controller, batch, *page);
}

void transferPendingPages(AppDelegate& controller, Batch& batch) {
    uint16_t pendingPages = 1;
    while (pendingPages != 0) {
        TW_IMAGEINFO info{};
        const bool hasInfo = readImageInfo(*gTWAINHandler, info) == twain::TWRC_SUCCESS;
        if (batch.saveResult == nothingSaved) {
            controller.showMemoryNotEnoughMessage();
            memoryShortage = true;
            return;
        }
        transferPage(controller, batch, hasInfo ? std::optional(info) : std::nullopt);
        // The scanner may take its time with the next page; this one is seen meanwhile.
        controller.showStatus("StatusWaiting");
        repaintWithoutInput();
        const EndedTransfer ended = endTransfer(*gTWAINHandler);
        batch.endFailed = ended.code != twain::TWRC_SUCCESS;
        pendingPages = ended.pendingPages;
        traceValue("pendingXfers.count", pendingPages);
        repaintWithoutInput();
        batch.isInterrupted = pendingPages != 0 && terminationRequested();
        if (batch.isInterrupted)
            return;
    }
}

void showResults(AppDelegate& controller) {
    if (controller.checkMemorySize(0) == 1)
        showNewPages(controller);
    if (controller.profileShowInFinder == 0 || !desktop().revealFile)
        return;
    const std::string& folder = controller.createFolerprofileFolderName;
    desktop().revealFile(folder.empty() ? controller.profileFolderName : folder);
}

} // namespace

void AppDelegate::completeMemoryXfer() {
    TraceScope trace("completeMemoryXfer");
    const DelayedMessagesHold hold;
    Batch batch;
    if (prepareBatch(*this)) {
        transferPendingPages(*this, batch);
    } else {
        batch.saveResult = nothingSaved;
        reportUnsavedPage(*this, batch.saveResult);
    }

    freeSpareBmpMemory();

    // A source that still holds a page can be neither disabled nor closed.
    if (batch.saveResult == nothingSaved || batch.endFailed || batch.isInterrupted)
        discardPendingPages(*gTWAINHandler);
    closeSource(*gTWAINHandler);

    const bool buildsMultiPageFile =
        isMultiPageFormat(profileFileformatSelect) && mMenuFileSave != 0;
    if (buildsMultiPageFile)
        currentPage += 1;
    bool isComplete = batch.saveResult != nothingSaved && !batch.isInterrupted;
    if (isComplete && buildsMultiPageFile)
        isComplete = joinMultiPageFile();
    if (isComplete)
        showResults(*this);
    keepStagedPages(); // what did not get into its file
    tellKeptPages();
    tellUnwrittenPages(*this, batch.unwrittenPages);
    endScan();
}

uint64_t AppDelegate::get_free_memory() {
    TraceScope trace("get_free_memory");
    const std::optional<uint64_t> bytes =
        host().availableMemoryBytes ? host().availableMemoryBytes() : std::nullopt;
    if (!bytes) {
        traceLine("Failed to fetch vm statistics");
        return 0;
    }
    return *bytes;
}

int32_t AppDelegate::checkMemorySize(uint32_t megabytes) {
    TraceScope trace("checkMemorySize");
    if (hasMemoryFor(get_free_memory(), megabytes))
        return 1;
    showNoDisplayImageMessage();
    return -1;
}

void AppDelegate::checkmemoryEnough() {
    TraceScope trace("checkmemoryEnough");
    if (memoryShortage || !isMemoryLowForDisplay(get_free_memory()))
        return;
    showNoDisplayImageMessage();
    memoryShortage = true;
}

} // namespace paperline
