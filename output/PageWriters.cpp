#include "output/PageWriters.h"

#include "base/CvOutputLog.h"
#include "codecs/bmp/BmpFile.h"
#include "codecs/bmp/BmpFilling.h"
#include "controller/AppDelegate.h"
#include "output/PageEncoder.h"
#include "output/ScratchNames.h"
#include "platform/files/WriteFailure.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace paperline {

namespace {

// Declared in the page list's copies, whatever the page's own resolution.
constexpr int32_t transferDpi = 600;

SaveOutcome notSaved(int32_t code, const PageWriteTarget& target, const std::string& reason) {
    return {code, {PageWriteResult::notOpened, target.path, reason}};
}

SaveOutcome noSpace(const PageWriteTarget& target) {
    return notSaved(-2, target, writeFailureText(ENOSPC));
}

// --- BMP ---

PageWrite writeBmpFile(const PageWriteTarget& target,
                       const BmpHeaderRecord& header,
                       BmpBlock& block,
                       BmpFilling& filling) {
    const uint32_t headerLength = bmpPixelOffset(block.page().bitsPerPixel);
    if (target.isScratch) {
        filling.awaitAll();
        const BmpWriteResult written = writebmp(target.path.c_str(),
                                                header,
                                                headerLength,
                                                block.rows(),
                                                static_cast<uint32_t>(block.stride()));
        if (written.complete)
            return {PageWriteResult::complete, target.path, {}};
        const bool isOpened = written.code != -1;
        return {isOpened ? PageWriteResult::incomplete : PageWriteResult::notOpened,
                target.path,
                writeFailureText(errno)};
    }
    PageWrite written = writePageFile(
        target, block.fileBytes(header, headerLength), [&filling, headerLength](size_t end) {
            filling.await(end - std::min<size_t>(end, headerLength));
        });
    if (written.result == PageWriteResult::notOpened)
        (void)reportBmpOpenError();
    return written;
}

// --- JPEG, PNG, GIF and TIFF ---

SaveOutcome raised(const PageWriteTarget& target, const std::string& reason) {
    systemLog("Exception : ImageWriterException, " + reason);
    return notSaved(-1, target, reason);
}

SaveOutcome encodeAndWrite(AppDelegate& controller,
                           const ImageRequest& request,
                           const PageWriteTarget& target) {
    if (!request.image.isValid() || request.image.representations().front() == nullptr)
        return raised(target, "the image has no representation");
    const BitmapImageRep& page = *request.image.representations().front();
    const Size points = pointsOfPage(page.pixelsWide(), page.pixelsHigh(), request.resolutionDpi);
    const EncodedPage encoded =
        encodePage(pageCodecs(),
                   page,
                   request.imageType,
                   densityOfPage(page.pixelsWide(), page.pixelsHigh(), points));
    if (!encoded.failure.empty())
        return raised(target, encoded.failure);
    if (controller.checkFreeDiskSpace(static_cast<int64_t>(encoded.bytes.size()),
                                      request.volumePath) != 1)
        return noSpace(target);
    return {1, writePageFile(target, encoded.bytes)};
}

} // namespace

PageWriteTarget pageTarget(const std::string& path, NextPagePath nextPath) {
    return {path, isScratchFile(path, scratchPath), std::move(nextPath)};
}

SaveOutcome
writeBmpPage(AppDelegate& controller, const BmpRequest& page, const PageWriteTarget& target) {
    TraceScope trace("saveAsBMPWithName");
    const BmpPageLayout layout{page.layout.pixelsWide(),
                               page.layout.pixelsHigh(),
                               page.layout.bitsPerPixel(),
                               page.layout.bytesPerRow()};
    if (layout.bitsPerPixel != 1 && layout.bitsPerPixel != 8 && layout.bitsPerPixel != 24)
        return notSaved(-1, target, "only pages of 1, 8 or 24 bits a pixel can be written");
    // Callers find the pixels swapped even when nothing is written.
    const auto swapOnly = [&layout, &page] {
        if (layout.bitsPerPixel == 24)
            swapRedAndBlue(page.pixels, layout.pixelsHigh, layout.bytesPerRow);
    };
    if (controller.checkFreeDiskSpace(bmpSpaceEstimate(layout),
                                      controller.createFolerprofileFolderName) != 1) {
        swapOnly();
        return noSpace(target);
    }
    std::optional<BmpBlock> block = BmpBlock::allocate(layout);
    if (!block) {
        swapOnly();
        traceLine("Memory is not enough for save BMP image file");
        controller.showMemoryNotEnoughMessage();
        return notSaved(-1, target, "out of memory");
    }
    const BmpHeaderRecord header = makeBmpHeader(layout, page.horizontalDpi, page.verticalDpi);
    BmpFilling filling(*block, page.pixels);
    traceLine("saveAsBMPWithName", "writebmp in");
    PageWrite written = writeBmpFile(target, header, *block, filling);
    if (written.result == PageWriteResult::notOpened)
        return {-1, std::move(written)};
    traceLine("saveAsBMPWithName", "writebmp out");
    return {0, std::move(written)};
}

SaveOutcome
writeImagePage(AppDelegate& controller, const ImageRequest& page, const PageWriteTarget& target) {
    TraceScope trace("saveAsJpegWithName");
    return encodeAndWrite(controller, page, target);
}

void reportUnwritten(const char* operation, const PageWrite& write) {
    const std::string line = write.path + " could not be written: " + write.reason;
    traceText(operation, line);
    systemLog("paperline: " + line);
}

int32_t AppDelegate::saveAsBMPWithName(uint8_t* pixels,
                                       BitmapImageRep& imageRep,
                                       uint32_t xRes,
                                       uint32_t yRes,
                                       const std::string& fileName) {
    return writeBmpPage(*this, {pixels, imageRep, xRes, yRes}, pageTarget(fileName)).code;
}

int32_t AppDelegate::saveAsJpegWithName(const Image& image,
                                        int32_t imageType,
                                        const std::string& fileName,
                                        const std::string& volumePath,
                                        int32_t resolution) {
    return writeImagePage(*this, {image, imageType, volumePath, resolution}, pageTarget(fileName))
        .code;
}

int32_t AppDelegate::saveAsJpegWithName_transfer(const Image& image,
                                                 int32_t imageType,
                                                 const std::string& fileName,
                                                 const std::string& volumePath) {
    TraceScope trace("saveAsJpegWithName_transfer");
    return encodeAndWrite(*this, {image, imageType, volumePath, transferDpi}, pageTarget(fileName))
        .code;
}

} // namespace paperline
