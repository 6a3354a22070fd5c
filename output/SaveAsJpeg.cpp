// The image writer's operations: JPEG, PNG, GIF and TIFF pages, final and staged.
#include "base/CvOutputLog.h"
#include "controller/AppDelegate.h"
#include "output/PageEncoder.h"
#include "output/ScratchNames.h"
#include "platform/places/Places.h"
#include "platform/process/SystemLog.h"

namespace paperline {

namespace {

// The page list's copies are declared at this resolution, whatever the page's own.
constexpr int32_t transferDpi = 600;

struct ImageWriteRequest {
    int32_t imageType = 0;
    const std::string& fileName;
    const std::string& volumePath;
    int32_t resolutionDpi = 0;
};

int32_t raised(const std::string& reason) {
    systemLog("Exception : ImageWriterException, " + reason);
    return -1;
}

int32_t
encodeAndWrite(AppDelegate& controller, const Image& image, const ImageWriteRequest& request) {
    controller.lastPageWrite = {};
    if (!image.isValid() || image.representations().front() == nullptr)
        return raised("the image has no representation");
    const BitmapImageRep& page = *image.representations().front();
    const Size points = pointsOfPage(page.pixelsWide(), page.pixelsHigh(), request.resolutionDpi);
    const EncodedPage encoded =
        encodePage(pageCodecs(),
                   page,
                   request.imageType,
                   densityOfPage(page.pixelsWide(), page.pixelsHigh(), points));
    if (!encoded.failure.empty())
        return raised(encoded.failure);
    if (controller.checkFreeDiskSpace(static_cast<int64_t>(encoded.bytes.size()),
                                      request.volumePath) != 1)
        return -2;
    // The write's success shows in lastPageWrite only: a page that could not be written counts as
    // saved.
    controller.lastPageWrite = writePageFile(
        {request.fileName, isScratchFile(request.fileName, scratchPath), controller.nextPagePath},
        encoded.bytes);
    return 1;
}

} // namespace

int32_t AppDelegate::saveAsJpegWithName(const Image& image,
                                        int32_t imageType,
                                        const std::string& fileName,
                                        const std::string& volumePath,
                                        int32_t resolution) {
    TraceScope trace("saveAsJpegWithName");
    return encodeAndWrite(*this, image, {imageType, fileName, volumePath, resolution});
}

int32_t AppDelegate::saveAsJpegWithName_transfer(const Image& image,
                                                 int32_t imageType,
                                                 const std::string& fileName,
                                                 const std::string& volumePath) {
    TraceScope trace("saveAsJpegWithName_transfer");
    return encodeAndWrite(*this, image, {imageType, fileName, volumePath, transferDpi});
}

} // namespace paperline
