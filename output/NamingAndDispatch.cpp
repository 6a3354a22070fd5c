// Names a page, hands it to the writer of its format and records where it went.
#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
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

namespace paperline {

bool firstPageOfBatch = false;
bool memoryShortage = false;
std::string multiPageTargetPath;
std::string multiTiffListPath;

namespace {

constexpr const char* operation = "saveXferDatatoMedia";

struct ReceivedPage {
    BitmapImageRep& representation;
    const Image& image;
    uint8_t* pixels = nullptr;
    int32_t horizontalDpi = 0;
    int32_t verticalDpi = 0;
};

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

int32_t saveAsBmp(AppDelegate& controller, const ReceivedPage& page, const std::string& path) {
    return controller.saveAsBMPWithName(page.pixels,
                                        page.representation,
                                        static_cast<uint32_t>(page.horizontalDpi),
                                        static_cast<uint32_t>(page.verticalDpi),
                                        path);
}

int32_t saveAsImage(AppDelegate& controller,
                    const ReceivedPage& page,
                    const FileFormat& format,
                    const std::string& path) {
    return controller.saveAsJpegWithName(page.image,
                                         format.imageType,
                                         path,
                                         controller.createFolerprofileFolderName,
                                         page.horizontalDpi);
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

// The path that the list shows, or the writer's negative result.
struct DispatchResult {
    int32_t code = 0;
    std::string listPath;
};

// --- single-page files ---

// A write that the code calls a success may have gone nowhere: the list then shows the name that
// the file would have had.
DispatchResult finishSinglePage(AppDelegate& controller,
                                const ReceivedPage& page,
                                const FileFormat& format,
                                const std::string& wantedPath) {
    const PageWrite written = controller.lastPageWrite;
    const std::string path = written.path.empty() ? wantedPath : written.path;
    const bool isComplete = written.result == PageWriteResult::complete;
    if (isComplete && (format.code == formatJpeg || format.code == formatTiff))
        controller.replaceExifInfo(path, controller.scannerName);
    if (isComplete && format.code == formatPdf)
        controller.replacePDFProducer(path, controller.scannerName);
    if (isComplete && controller.savedFileObserver) {
        SavedFile saved = savedFileOf(page, format);
        saved.path = path;
        controller.savedFileObserver(saved);
    }
    return {0, path};
}

// --- staged pages ---

// A staged page that is not whole must not be joined: its joiner would try it again without end.
int32_t stagePage(AppDelegate& controller,
                  const ReceivedPage& page,
                  const FileFormat& format,
                  const std::string& stagedPath) {
    const int32_t code = controller.saveAsJpegWithName(
        page.image, format.imageType, stagedPath, scratchPath(scratchVolume), page.horizontalDpi);
    if (code < 0 || controller.lastPageWrite.result == PageWriteResult::complete)
        return code;
    removePath(stagedPath);
    return controller.lastPageWrite.result == PageWriteResult::incomplete ? -2 : -1;
}

// The next document's page is staged under the same name: this one moves out of its way.
void keepPageOfLostDocument(AppDelegate& controller) {
    controller.keepStagedPages();
    // It may have been set aside together with its folder.
    if (!createPrivateFolder(scratchPath(stagingFolderName)))
        traceText("temporary folder not made", stagingFolderName);
}

DispatchResult saveAsPdf(AppDelegate& controller,
                         const ReceivedPage& page,
                         const FileFormat& format,
                         const std::string& path) {
    const std::string folder = scratchPath(stagingFolderName);
    const std::string staged = folder + stagedPageName(controller.currentMultiPage, ".jpg");
    if (fileExists(staged)) // an earlier page that could not be moved anywhere
        return {-1, {}};
    int32_t code = stagePage(controller, page, format, staged);
    if (code < 0)
        return {code, {}};
    code = controller.CreatePDF(folder + "/", path);
    if (controller.lastPageWrite.result == PageWriteResult::complete)
        removePath(staged); // it is in its file: nothing to be kept
    else
        keepPageOfLostDocument(controller);
    return code < 0 ? DispatchResult{code, {}} : finishSinglePage(controller, page, format, path);
}

void rememberMultiPage(AppDelegate& controller,
                       const ReceivedPage& page,
                       const FileFormat& format,
                       const std::string& path) {
    if (controller.currentMultiPage != 1)
        return;
    multiPageTargetPath = path;
    controller.multiPageFile = savedFileOf(page, format);
    controller.multiPageFile.pages = 0;
}

DispatchResult stageForPdf(AppDelegate& controller,
                           const ReceivedPage& page,
                           const FileFormat& format,
                           const std::string& path) {
    rememberMultiPage(controller, page, format, path);
    const int32_t code = stagePage(controller,
                                   page,
                                   format,
                                   scratchPath(stagingFolderName) +
                                       stagedPageName(controller.currentMultiPage, ".jpg"));
    if (code < 0)
        return {code, {}};
    ++controller.currentMultiPage;
    ++controller.multiPageFile.pages;
    return {code, path};
}

DispatchResult stageForTiff(AppDelegate& controller,
                            const ReceivedPage& page,
                            const FileFormat& format,
                            const std::string& path) {
    rememberMultiPage(controller, page, format, path);
    const std::string name = stagedPageName(controller.currentMultiPage, ".tif");
    const std::string staged = scratchPath(stagingFolderName) + name;
    const int32_t code = stagePage(controller, page, format, staged);
    if (code < 0)
        return {code, {}};
    controller.replaceExifInfo(staged, controller.scannerName);
    if (controller.currentMultiPage == 1)
        multiTiffListPath =
            scratchPath(scratchRootName) + stagedPageName(controller.currentPage, ".tif");
    const std::string listCopy = scratchPath(listStagingFolderName) + name;
    removePath(listCopy);
    // Only the list's copy: its result is not tested. It may be a second name of the page, which
    // nothing changes any more: it is read, moved and removed.
    (void)linkOrCopyFile(staged, listCopy);
    ++controller.currentMultiPage;
    ++controller.multiPageFile.pages;
    return {code, multiTiffListPath};
}

DispatchResult writeInFormat(AppDelegate& controller,
                             const ReceivedPage& page,
                             const FileFormat& format,
                             const std::string& path) {
    if (!canWriteFormat(pageCodecs(), format.code))
        return {-1, {}};
    int32_t code = 0;
    switch (format.code) {
    case formatPdf:
        return saveAsPdf(controller, page, format, path);
    case formatMultiPagePdf:
        return stageForPdf(controller, page, format, path);
    case formatMultiPageTiff:
        return stageForTiff(controller, page, format, path);
    case formatBmp:
        code = saveAsBmp(controller, page, path);
        break;
    default:
        code = saveAsImage(controller, page, format, path);
    }
    return code < 0 ? DispatchResult{code, {}} : finishSinglePage(controller, page, format, path);
}

DispatchResult
dispatch(AppDelegate& controller, const ReceivedPage& page, const PageNamePattern& pattern) {
    const FileFormat* format = fileFormatOf(controller.profileFileformatSelect);
    const PageName name = nameForPage(controller, pattern);
    dropPreview(controller);
    if (format == nullptr)
        return {0, name.base};
    traceMark(format->logLabel, format->code == formatBmp ? " In" : " In ");
    traceText(operation, name.path);
    controller.showSavingStatus(name.path);
    DispatchResult result = writeInFormat(controller, page, *format, name.path);
    if (result.code >= 0)
        traceMark(format->logLabel, " Out");
    return result;
}

int32_t savePage(AppDelegate& controller, const ReceivedPage& page) {
    systemLog("createFolerprofileFolderName = " + controller.createFolerprofileFolderName);
    systemLog("saveImageName = " + controller.saveImageName);
    if (controller.SelectFolderAutoDetectFlag == 0)
        controller.createFolerprofileFolderName = controller.profileFolderName;
    const FileFormat* format = fileFormatOf(controller.profileFileformatSelect);
    const PageNamePattern pattern = namePattern(controller, format);

    controller.nextPagePath = [&controller, &pattern] {
        ++controller.currentPage;
        return nameForPage(controller, pattern).path;
    };
    const DispatchResult result = dispatch(controller, page, pattern);
    controller.nextPagePath = nullptr;
    if (result.code < 0)
        return result.code;

    if (!memoryShortage) {
        traceMark("add to ImageFilePath", "");
        controller.imageFilePath.push_back(result.listPath);
    }
    if (!pattern.isMultiPage)
        ++controller.currentPage;
    return 0;
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

int32_t showPageOnly(AppDelegate& controller, const ReceivedPage& page) {
    traceMark("mMenuFileSave = 0", "");
    const std::string path = scratchPath(previewName);
    removePath(path);                        // an earlier page must not pass for this one
    (void)saveAsBmp(controller, page, path); // a preview that could not be written is not reported
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
    // Without a file, or after too many pages of high resolution, the list does not take it. The
    // newest path is then a saved page's, which the next page must not drop.
    const bool isListed =
        !controller.imageFilePath.empty() && controller.imageFilePath.back() == path;
    controller.nonFileSaveImageInTempFolder = isListed ? 1 : 0;
    controller._selectedRaw = -1;
    return 0;
}

} // namespace

int32_t AppDelegate::saveXferDatatoMedia(BitmapImageRep& imageRep,
                                         const Image& orgImage,
                                         uint8_t* tmppDst1,
                                         float /*xRes*/,
                                         float yRes,
                                         TW_IMAGEINFO imageInfomation,
                                         int32_t /*imageBytesPerLine*/) {
    TraceScope trace(operation);
    const TW_FIX32 reported = imageInfomation.XResolution;
    const ReceivedPage page{imageRep,
                            orgImage,
                            tmppDst1,
                            wholeDpi(resolutionOfFixedPoint(reported.Whole, reported.Frac)),
                            wholeDpi(yRes)};
    return mMenuFileSave == 0 ? showPageOnly(*this, page) : savePage(*this, page);
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
