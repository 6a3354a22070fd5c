// The BMP writer's operation.
#include "app/AppDelegate.h"
#include "app/CvOutputLog.h"
#include "output/BmpFile.h"
#include "platform/Places.h"

#include <optional>

namespace paperline {

namespace {

bool canBeBmp(const BitmapImageRep& page) {
    return page.bitsPerPixel() == 1 || page.bitsPerPixel() == 8 || page.bitsPerPixel() == 24;
}

// Scratch files are written in place, others created whole; both give the writer's code.
int32_t writeBlock(AppDelegate& controller,
                   const std::string& fileName,
                   const BmpHeaderRecord& header,
                   const BmpPageLayout& layout,
                   BmpBlock& block) {
    const uint32_t headerLength = bmpPixelOffset(layout.bitsPerPixel);
    if (isScratchFile(fileName, scratchPath)) {
        const auto stride =
            static_cast<uint32_t>(bmpStride(layout.pixelsWide, layout.bitsPerPixel));
        const BmpWriteResult written =
            writebmp(fileName.c_str(), header, headerLength, block.rows(), stride);
        controller.lastPageWrite = {
            written.complete ? PageWriteResult::complete : PageWriteResult::incomplete, fileName};
        return written.code;
    }
    controller.lastPageWrite = writePageFile({fileName, false, controller.nextPagePath},
                                             block.fileBytes(header, headerLength));
    return controller.lastPageWrite.result == PageWriteResult::notOpened ? reportBmpOpenError() : 1;
}

} // namespace

int32_t AppDelegate::saveAsBMPWithName(uint8_t* pixels,
                                       BitmapImageRep& imageRep,
                                       uint32_t xRes,
                                       uint32_t yRes,
                                       const std::string& fileName) {
    TraceScope trace("saveAsBMPWithName");
    lastPageWrite = {};
    const BmpPageLayout layout{imageRep.pixelsWide(),
                               imageRep.pixelsHigh(),
                               imageRep.bitsPerPixel(),
                               imageRep.bytesPerRow()};
    if (layout.bitsPerPixel == 24)
        swapRedAndBlue(pixels, layout.pixelsHigh, layout.bytesPerRow);
    if (!canBeBmp(imageRep))
        return -1;
    const BmpHeaderRecord header = makeBmpHeader(layout, xRes, yRes);
    if (checkFreeDiskSpace(bmpSpaceEstimate(layout), createFolerprofileFolderName) != 1)
        return -2;

    std::optional<BmpBlock> block = BmpBlock::allocate(layout);
    if (!block) {
        traceLine("Memory is not enough for save BMP image file");
        showMemoryNotEnoughMessage();
        return -1;
    }
    block->copyRowsBottomUp(pixels);
    traceLine("saveAsBMPWithName", "writebmp in");
    if (writeBlock(*this, fileName, header, layout, *block) == -1)
        return -1;
    traceLine("saveAsBMPWithName", "writebmp out");
    return 0;
}

} // namespace paperline
