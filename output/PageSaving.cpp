#include "output/PageSaving.h"

#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "output/JoinedFiles.h"
#include "output/NameTemplate.h"
#include "output/PageEncoder.h"
#include "output/PageNaming.h"
#include "output/Resolution.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"
#include "viewer/ImageView.h"

#include <cmath>
#include <string>
#include <utility>

namespace paperline {

bool firstPageOfBatch = false;
bool memoryShortage = false;
std::string multiPageTargetPath;
std::string multiTiffListPath;

namespace {

constexpr const char* operation = "saveXferDatatoMedia";

DateFormatter dateFormatter() {
    return [locale = host().localeIdentifier()](double seconds, const std::string& pattern) {
        return formatDate(
            {.secondsSinceEpoch = seconds, .localeIdentifier = locale, .timeZone = {}}, pattern);
    };
}

// The display-only preview of an earlier page makes way for the next one.
void dropPreview(AppDelegate& controller) {
    if (controller.nonFileSaveImageInTempFolder != 0)
        controller.dropNewestPath();
}

void traceMark(const char* label, const char* mark) {
    if (gOutputLog != nullptr && gOutputLog->debugLevel != 0)
        traceLine(operation, (std::string(label) + mark).c_str());
}

// --- one page into the save folder, or staged for a multi-page file ---

PageNamePattern namePattern(const AppDelegate& controller, const FileFormat* format) {
    return {controller.createFolerprofileFolderName,
            controller.saveImageName,
            format != nullptr ? format->extension : "",
            format != nullptr && format->isMultiPage};
}

// Moves the counter to the page's number. The first page of a multi-page file fixes the name of
// all.
PageName nameForPage(AppDelegate& controller, const PageNamePattern& pattern) {
    PageName name = findPageName(
        pattern,
        controller.currentPage,
        {.testCollisions = firstPageOfBatch,
         .fileExists = fileExists,
         .announce = [](const std::string& base) { systemLog("saveFileName = " + base); }});
    controller.currentPage = name.counter;
    if (pattern.isMultiPage)
        firstPageOfBatch = false;
    return name;
}

SaveOutcome
saveAsBmp(AppDelegate& controller, const ReceivedPage& page, const PageWriteTarget& target) {
    return writeBmpPage(controller,
                        {page.pixels,
                         page.representation,
                         static_cast<uint32_t>(page.horizontalDpi),
                         static_cast<uint32_t>(page.verticalDpi)},
                        target);
}

SavedFile savedFileOf(const ReceivedPage& page, const FileFormat& format) {
    return {.path = {},
            .fileFormat = format.code,
            .widthPixels = page.representation.pixelsWide(),
            .heightPixels = page.representation.pixelsHigh(),
            .bitsPerPixel = page.representation.bitsPerPixel(),
            .resolutionDpi = static_cast<double>(page.horizontalDpi),
            .pages = 1};
}

bool isComplete(const SaveOutcome& saved) {
    return saved.code >= 0 && saved.write.result == PageWriteResult::complete;
}

// --- single-page files ---

void finishSinglePage(AppDelegate& controller,
                      const ReceivedPage& page,
                      const FileFormat& format,
                      const std::string& path) {
    if (format.code == formatJpeg || format.code == formatTiff)
        controller.replaceExifInfo(path, controller.scannerName);
    if (format.code == formatPdf)
        controller.replacePDFProducer(path, controller.scannerName);
    if (controller.savedFileObserver) {
        SavedFile saved = savedFileOf(page, format);
        saved.path = path;
        controller.savedFileObserver(saved);
    }
}

// --- staged pages ---

// A staged page that is cut off must not be joined: the joiner would retry it without end.
SaveOutcome stagePage(AppDelegate& controller,
                      const ReceivedPage& page,
                      const FileFormat& format,
                      const std::string& stagedPath) {
    SaveOutcome staged = writeImagePage(
        controller,
        {page.image, format.imageType, scratchPath(scratchVolume), page.horizontalDpi},
        pageTarget(stagedPath));
    if (staged.code < 0 || isComplete(staged))
        return staged;
    removePath(stagedPath);
    staged.code = staged.write.result == PageWriteResult::incomplete ? -2 : -1;
    return staged;
}

// The next page is staged under the same name.
void keepPageOfLostDocument(AppDelegate& controller) {
    controller.keepStagedPages();
    // The folder may have been renamed with the page.
    if (!createPrivateFolder(scratchPath(stagingFolderName)))
        traceText("temporary folder not made", stagingFolderName);
}

SaveOutcome saveAsPdf(AppDelegate& controller,
                      const ReceivedPage& page,
                      const FileFormat& format,
                      const PageWriteTarget& target) {
    const std::string folder = scratchPath(stagingFolderName);
    const std::string staged = folder + stagedPageName(controller.currentMultiPage, ".jpg");
    if (fileExists(staged))
        return {-1, {PageWriteResult::notOpened, target.path, "the last page is still staged"}};
    SaveOutcome saved = stagePage(controller, page, format, staged);
    if (saved.code < 0)
        return saved;
    saved = writePdf(folder + "/", target);
    if (isComplete(saved))
        removePath(staged);
    else
        keepPageOfLostDocument(controller);
    return saved;
}

// Stages a page of the multi-page file at `path`.
SaveOutcome stageForFile(AppDelegate& controller,
                         const ReceivedPage& page,
                         const FileFormat& format,
                         const std::string& path) {
    const bool isTiff = format.code == formatMultiPageTiff;
    if (controller.currentMultiPage == 1) {
        multiPageTargetPath = path;
        controller.multiPageFile = savedFileOf(page, format);
        controller.multiPageFile.pages = 0;
    }
    const std::string name = stagedPageName(controller.currentMultiPage, isTiff ? ".tif" : ".jpg");
    const std::string stagedPath = scratchPath(stagingFolderName) + name;
    SaveOutcome staged = stagePage(controller, page, format, stagedPath);
    if (staged.code < 0)
        return staged;
    if (isTiff) {
        controller.replaceExifInfo(stagedPath, controller.scannerName);
        if (controller.currentMultiPage == 1)
            multiTiffListPath =
                scratchPath(scratchRootName) + stagedPageName(controller.currentPage, ".tif");
        const std::string listCopy = scratchPath(listStagingFolderName) + name;
        removePath(listCopy);
        (void)linkOrCopyFile(stagedPath, listCopy); // its result is not tested
    }
    ++controller.currentMultiPage;
    ++controller.multiPageFile.pages;
    staged.write.path = isTiff ? multiTiffListPath : path;
    return staged;
}

SaveOutcome writeInFormat(AppDelegate& controller,
                          const ReceivedPage& page,
                          const FileFormat& format,
                          const PageWriteTarget& target) {
    if (!canWriteFormat(pageCodecs(), format.code))
        return {-1, {PageWriteResult::notOpened, target.path, "the format has no encoder"}};
    if (format.isMultiPage)
        return stageForFile(controller, page, format, target.path);
    SaveOutcome saved;
    if (format.code == formatPdf)
        saved = saveAsPdf(controller, page, format, target);
    else if (format.code == formatBmp)
        saved = saveAsBmp(controller, page, target);
    else
        saved = writeImagePage(controller,
                               {page.image,
                                format.imageType,
                                controller.createFolerprofileFolderName,
                                page.horizontalDpi},
                               target);
    if (isComplete(saved))
        finishSinglePage(controller, page, format, saved.write.path);
    return saved;
}

// The path in the outcome is what the page list shows.
SaveOutcome
dispatch(AppDelegate& controller, const ReceivedPage& page, const PageNamePattern& pattern) {
    const FileFormat* format = fileFormatOf(controller.profileFileformatSelect);
    const PageName name = nameForPage(controller, pattern);
    dropPreview(controller);
    if (format == nullptr)
        return {0, {PageWriteResult::complete, name.base, {}}};
    traceMark(format->logLabel, format->code == formatBmp ? " In" : " In ");
    traceText(operation, name.path);
    controller.showSavingStatus(name.path);
    const NextPagePath nextPath = [&controller, &pattern] {
        ++controller.currentPage;
        return nameForPage(controller, pattern).path;
    };
    SaveOutcome saved = writeInFormat(controller, page, *format, pageTarget(name.path, nextPath));
    if (!isComplete(saved))
        reportUnwritten(operation, saved.write);
    if (saved.code >= 0)
        traceMark(format->logLabel, " Out");
    return saved;
}

SaveOutcome savePage(AppDelegate& controller, const ReceivedPage& page) {
    systemLog("createFolerprofileFolderName = " + controller.createFolerprofileFolderName);
    systemLog("saveImageName = " + controller.saveImageName);
    if (controller.SelectFolderAutoDetectFlag == 0)
        controller.createFolerprofileFolderName = controller.profileFolderName;
    const FileFormat* format = fileFormatOf(controller.profileFileformatSelect);
    const PageNamePattern pattern = namePattern(controller, format);
    SaveOutcome saved = dispatch(controller, page, pattern);
    if (saved.code < 0)
        return saved;
    if (!memoryShortage) {
        traceMark("add to ImageFilePath", "");
        controller.imageFilePath.push_back(saved.write.path);
    }
    if (!pattern.isMultiPage)
        ++controller.currentPage;
    saved.code = 0;
    return saved;
}

// --- display only ---

void restoreImageView(AppDelegate& controller) {
    if (controller.mImageView == nullptr)
        return;
    const Rect& frame = controller.orgRect;
    controller.mImageView->setGeometry(static_cast<int>(std::lround(frame.x)),
                                       static_cast<int>(std::lround(frame.y)),
                                       static_cast<int>(std::lround(frame.width)),
                                       static_cast<int>(std::lround(frame.height)));
    controller.mImageView->setFitorAcutalImage(controller._fitOrAcutalImage);
}

void showPageOnly(AppDelegate& controller, const ReceivedPage& page) {
    traceMark("mMenuFileSave = 0", "");
    const std::string path = scratchPath(previewName);
    removePath(path); // or a failed write would show the last page
    (void)saveAsBmp(controller, page, pageTarget(path));
    controller.deselectRows();
    dropPreview(controller);
    controller.imageFilePath.push_back(path);
    controller.GetImageFromImageFolder();
    controller.reloadMainTable();
    restoreImageView(controller);
    if (!controller.cellInfos.empty()) {
        const auto lastRow = static_cast<uint32_t>(controller.cellInfos.size() - 1);
        controller.showRow(lastRow);
    }
    // The list refuses a missing file, and any after too many pages of high resolution. The newest
    // path is then a saved page's, which the next page must not drop.
    const bool isListed =
        !controller.imageFilePath.empty() && controller.imageFilePath.back() == path;
    controller.nonFileSaveImageInTempFolder = isListed ? 1 : 0;
    controller._selectedRaw = -1;
}

} // namespace

int32_t reportedDpi(const TW_FIX32& resolution) {
    return wholeDpi(resolutionOfFixedPoint(resolution.Whole, resolution.Frac));
}

SaveOutcome saveReceivedPage(AppDelegate& controller, const ReceivedPage& page) {
    TraceScope trace(operation);
    if (controller.mMenuFileSave != 0)
        return savePage(controller, page);
    showPageOnly(controller, page);
    return {0, {PageWriteResult::complete, scratchPath(previewName), {}}};
}

int32_t AppDelegate::saveXferDatatoMedia(BitmapImageRep& imageRep,
                                         const Image& orgImage,
                                         uint8_t* tmppDst1,
                                         float /*xRes*/,
                                         float yRes,
                                         TW_IMAGEINFO imageInfomation,
                                         int32_t /*imageBytesPerLine*/) {
    return saveReceivedPage(*this,
                            {imageRep,
                             orgImage,
                             tmppDst1,
                             reportedDpi(imageInfomation.XResolution),
                             wholeDpi(yRes)})
        .code;
}

int32_t AppDelegate::checkFreeDiskSpace(int64_t byteCount, const std::string& volumePath) {
    TraceScope trace("checkFreeDiskSpace");
    return host().freeSpaceBytes(volumePath).value_or(0) >= byteCount ? 1 : -1;
}

void AppDelegate::updateDateTimeInfo2() {
    TraceScope trace("updateDateTimeInfo2");
    saveImageName = expandFirstToken(saveImageName, host().secondsSinceEpoch(), dateFormatter());
}

void AppDelegate::updateDateTimeInfo() {
    TraceScope trace("updateDateTimeInfo");
    saveImageName = expandAllTokens(saveImageName, host().secondsSinceEpoch(), dateFormatter());
}

bool AppDelegate::Contains(const std::string& needle, const std::string& text) const {
    TraceScope trace("Contains");
    return containsIgnoringCase(needle, text);
}

} // namespace paperline
