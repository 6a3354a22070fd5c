// Turns newly saved page files into rows of the page list.
#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "controller/AppDelegate.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "viewer/PageListRules.h"
#include "viewer/PageLoader.h"
#include "viewer/PixelConversion.h"

#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace paperline {

int32_t iNextImage = 0;
int32_t gHighResolutionPageCount = 0;
int32_t gNoDisplayImageShown = 0;

namespace {

constexpr const char* operation = "GetImageFromImageFolder";
constexpr const char* scratchJpeg = "/tmp/1.jpg";
constexpr double lowMemoryBytes = 51.2 * 1024 * 1024;
// The scratch JPEG is strongly compressed: thumbnails average several of its pixels.
constexpr int previewPixelsPerThumbnailPixel = 3;
constexpr int bufferThumbnailPixels = 360;

void log(const char* text) {
    traceText(operation, text);
}

void logNumber(const char* label, int64_t number) {
    if (isTracing())
        traceText(operation, label + std::to_string(number));
}

void logTime(const char* label) {
    if (!isTracing())
        return;
    traceText(operation,
              label + formatDate({.secondsSinceEpoch = host().secondsSinceEpoch(),
                                  .localeIdentifier = "en_US",
                                  .timeZone = {}},
                                 "HH:mm:ss.SSS"));
}

// Enough for the 128 points of a thumbnail on a fine screen. All thumbnails are kept in memory, so
// a long list has coarser ones.
int thumbnailPixels(size_t rows) {
    constexpr double pixelsAtOnePixelAPoint = 192;
    constexpr double atMost = 256;
    constexpr size_t longList = 1000;
    constexpr int inLongList = 128;
    if (rows >= longList)
        return inLongList;
    const double ratio = qGuiApp != nullptr ? qGuiApp->devicePixelRatio() : 1.0;
    return static_cast<int>(std::min(pixelsAtOnePixelAPoint * ratio, atMost));
}

// By way of the scratch JPEG. Null on failure.
QImage makeThumbnail(AppDelegate& controller, const PagePreviews& pages, int pageIndex) {
    const int longSide = thumbnailPixels(controller.cellInfos.size());
    const LoadedPage page = pages.load(pageIndex, longSide * previewPixelsPerThumbnailPixel);
    if (page.error != PageLoadError::none)
        return {};
    const std::string path = scratchPath(scratchJpeg);
    removePath(path); // of an earlier page
    if (controller.saveAsJpegWithName_transfer(
            imageObject(page.raster->image), imageTypeJpeg, path, scratchPath("/tmp")) < 0) {
        log("saveAsJpegWithName_transfer failed");
        return {};
    }
    QImage thumbnail = readThumbnail(path, longSide);
    if (thumbnail.isNull())
        log("initWithContentsOfFile continue");
    return thumbnail;
}

void logFreeMemory(AppDelegate& controller) {
    const uint64_t freeBytes = controller.get_free_memory();
    logNumber("freeMem = ", static_cast<int64_t>(freeBytes));
    if (static_cast<double>(freeBytes) < lowMemoryBytes)
        log("freeMem < 50M");
}

// False: the thumbnail cannot be made. The command line makes none.
bool appendPage(AppDelegate& controller,
                const std::string& path,
                const PagePreviews& pages,
                int pageIndex) {
    QImage thumbnail;
    if (!controller.launchOptions().commandLine) {
        thumbnail = makeThumbnail(controller, pages, pageIndex);
        if (thumbnail.isNull())
            return false;
    }
    logFreeMemory(controller);
    const std::string displayName = withoutPathExtension(lastPathComponent(path));
    log("CellInfo alloc In");
    logNumber("strImageIndex = ", pageIndex);
    controller.cellInfos.push_back(
        {.title = {},
         .subtitle = pageCaption(displayName, pageIndex, pages.pageCount()),
         .image = std::move(thumbnail),
         .imageFullPath = path,
         .imageIndex = pageIndex});
    log("CellInfo alloc Out");
    removePath(scratchPath(scratchJpeg));
    return true;
}

bool appendPagesOfFile(AppDelegate& controller, const std::string& path) {
    const PagePreviews pages(path);
    if (pages.pageCount() == 0)
        return false;
    for (int page = 0; page < pages.pageCount(); ++page)
        if (!appendPage(controller, path, pages, page))
            return false;
    return true;
}

void stopListingAt(AppDelegate& controller, size_t failedPath) {
    controller.showNoDisplayImageMessage();
    removePath(scratchPath(scratchJpeg));
    iNextImage = static_cast<int32_t>(failedPath);
    if (gHighResolutionScan)
        gHighResolutionPageCount += static_cast<int32_t>(failedPath);
    controller.imageFilePath.resize(failedPath);
    logNumber("imageFilePath count = ", static_cast<int64_t>(failedPath));
}

// False: stopped at a page that cannot be shown.
bool listNewPaths(AppDelegate& controller) {
    std::vector<std::string>& paths = controller.imageFilePath;
    auto i = static_cast<size_t>(std::max(iNextImage, 0));
    while (i < paths.size()) {
        logNumber("imageFilePath count = ", static_cast<int64_t>(paths.size()));
        logNumber("iNextImage = ", static_cast<int64_t>(i));
        const std::string path = paths[i];
        if (isTracing())
            traceText(operation, "theFileName = " + withoutPathExtension(lastPathComponent(path)));
        if (!fileExists(path)) {
            log("file not Exist");
            paths.erase(paths.begin() + static_cast<ptrdiff_t>(i));
            continue;
        }
        if (!appendPagesOfFile(controller, path)) {
            stopListingAt(controller, i);
            return false;
        }
        i = endOfEqualPaths(paths, i);
    }
    return true;
}

ListingDecision decide(const AppDelegate& controller) {
    ListingCounters counters{
        iNextImage, gHighResolutionPageCount, gNoDisplayImageShown, gHighResolutionScan};
    const ListingDecision decision = decideListing(counters, controller.imageFilePath.size());
    gHighResolutionPageCount = counters.highResolutionPageCount;
    return decision;
}

void dropNewPaths(AppDelegate& controller) {
    const auto listed = static_cast<size_t>(std::max(iNextImage, 0));
    if (listed < controller.imageFilePath.size())
        controller.imageFilePath.resize(listed);
}

} // namespace

void AppDelegate::GetImageFromImageFolder() {
    traceLine(operation, "In ");
    const ListingDecision decision = decide(*this);
    if (decision == ListingDecision::list) {
        logTime("Start Time is ");
        logNumber("imageFilePath count = ", static_cast<int64_t>(imageFilePath.size()));
        if (listNewPaths(*this)) {
            iNextImage = static_cast<int32_t>(imageFilePath.size());
            traceLine(operation, "Out");
            logTime("End Time is ");
            return;
        }
    } else if (decision == ListingDecision::silentForGood) {
        log("No Display Image again(>300dpi)");
    } else {
        if (decision == ListingDecision::tellAndDropThem)
            showNoDisplayImageMessage();
        dropNewPaths(*this);
    }
    traceLine(operation, "Out");
}

void AppDelegate::GetImageFromImageBuffer(const QImage& image) {
    TraceScope trace("GetImageFromImageBuffer");
    cellInfos.clear();
    cellInfoImages.clear();
    QImage scaled(
        bufferThumbnailPixels, bufferThumbnailPixels, QImage::Format_ARGB32_Premultiplied);
    scaled.fill(Qt::transparent);
    QPainter painter(&scaled);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(
        0, 0, image.scaled(scaled.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    painter.end();
    cellInfoImages.push_back(scaled);
}

void AppDelegate::deleteFolderImage() {
    TraceScope trace("deleteFolderImage");
}

int32_t AppDelegate::addOneImageToScrollView(const Image&) {
    TraceScope trace("addOneImageToScrollView");
    return 1;
}

} // namespace paperline
