// Names a page, hands it to the writer of its format and records where it went.
#include "app/AppDelegate.h"
#include "app/CvOutputLog.h"
#include "output/FileFormats.h"
#include "output/NameTemplate.h"
#include "output/PageEncoder.h"
#include "output/PageNaming.h"
#include "output/Resolution.h"
#include "platform/DatePatterns.h"
#include "platform/Host.h"
#include "platform/Places.h"
#include "platform/SystemLog.h"

#include <optional>
#include <utility>

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

// Takes the display-only preview of an earlier page off the list, with its row.
void dropPreview(AppDelegate& controller) {
    if (controller.nonFileSaveImageInTempFolder != 0 && !controller.imageFilePath.empty()) {
        const std::string path = controller.imageFilePath.back();
        controller.imageFilePath.pop_back();
        while (!controller.cellInfos.empty() && controller.cellInfos.back().imageFullPath == path)
            controller.cellInfos.pop_back();
        if (iNextImage > static_cast<int32_t>(controller.imageFilePath.size()))
            iNextImage = static_cast<int32_t>(controller.imageFilePath.size());
    }
    controller.nonFileSaveImageInTempFolder = 0;
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

int32_t writePage(AppDelegate& controller,
                  const ReceivedPage& page,
                  const FileFormat& format,
                  const std::string& path) {
    return format.code == formatBmp ? saveAsBmp(controller, page, path)
                                    : saveAsImage(controller, page, format, path);
}

// The path that the list shows, or the writer's negative result.
struct DispatchResult {
    int32_t code = 0;
    std::string listPath;
};

void reportSavedFile(AppDelegate& controller, const ReceivedPage& page, const FileFormat& format) {
    if (controller.lastPageWrite.result != PageWriteResult::complete ||
        !controller.savedFileObserver)
        return;
    controller.savedFileObserver({.path = controller.lastPageWrite.path,
                                  .fileFormat = format.code,
                                  .widthPixels = page.representation.pixelsWide(),
                                  .heightPixels = page.representation.pixelsHigh(),
                                  .bitsPerPixel = page.representation.bitsPerPixel(),
                                  .resolutionDpi = static_cast<double>(page.horizontalDpi),
                                  .pages = 1});
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
    if (!canWriteFormat(format->code))
        return {-1, {}};
    const int32_t code = writePage(controller, page, *format, name.path);
    if (code < 0)
        return {code, {}};
    reportSavedFile(controller, page, *format);
    traceMark(format->logLabel, " Out");
    const std::string& written = controller.lastPageWrite.path;
    return {code, written.empty() ? name.path : written};
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

int32_t showPageOnly(AppDelegate& controller, const ReceivedPage& page) {
    traceMark("mMenuFileSave = 0", "");
    const std::string path = scratchPath(previewName);
    (void)saveAsBmp(controller, page, path); // a preview that could not be written is not reported
    dropPreview(controller);
    controller.imageFilePath.push_back(path);
    controller.GetImageFromImageFolder();
    controller.reloadMainTable();
    if (!controller.cellInfos.empty()) {
        const auto lastRow = static_cast<uint32_t>(controller.cellInfos.size() - 1);
        if (controller._fitOrAcutalImage == 1)
            controller.showFitlSizeImage(lastRow);
        else
            controller.showActualSizeImage(lastRow);
    }
    controller.nonFileSaveImageInTempFolder = 1;
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
    return containsIgnoringCase(needle, text);
}

} // namespace paperline
