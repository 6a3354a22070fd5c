// The BMP writer's operation.
#include "base/CvOutputLog.h"
#include "codecs/bmp/BmpFile.h"
#include "codecs/bmp/BmpFilling.h"
#include "controller/AppDelegate.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/places/Places.h"

#include <algorithm>
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
                   BmpBlock& block,
                   BmpFilling& filling) {
    const uint32_t headerLength = bmpPixelOffset(block.page().bitsPerPixel);
    if (isScratchFile(fileName, scratchPath)) {
        filling.awaitAll();
        const BmpWriteResult written = writebmp(fileName.c_str(),
                                                header,
                                                headerLength,
                                                block.rows(),
                                                static_cast<uint32_t>(block.stride()));
        controller.lastPageWrite = {
            written.complete ? PageWriteResult::complete : PageWriteResult::incomplete, fileName};
        return written.code;
    }
    const AwaitBytes awaitBytes = [&filling, headerLength](size_t end) {
        filling.await(end - std::min<size_t>(end, headerLength));
    };
    controller.lastPageWrite = writePageFile({fileName, false, controller.nextPagePath},
                                             block.fileBytes(header, headerLength),
                                             awaitBytes);
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
    if (!canBeBmp(imageRep))
        return -1;
    // The caller's pixels end swapped whatever happens.
    const auto swapAlone = [&layout, pixels] {
        if (layout.bitsPerPixel == 24)
            swapRedAndBlue(pixels, layout.pixelsHigh, layout.bytesPerRow);
    };
    const BmpHeaderRecord header = makeBmpHeader(layout, xRes, yRes);
    if (checkFreeDiskSpace(bmpSpaceEstimate(layout), createFolerprofileFolderName) != 1) {
        swapAlone();
        return -2;
    }

    std::optional<BmpBlock> block = BmpBlock::allocate(layout);
    if (!block) {
        swapAlone();
        traceLine("Memory is not enough for save BMP image file");
        showMemoryNotEnoughMessage();
        return -1;
    }
    BmpFilling filling(*block, pixels);
    traceLine("saveAsBMPWithName", "writebmp in");
    if (writeBlock(*this, fileName, header, *block, filling) == -1)
        return -1;
    traceLine("saveAsBMPWithName", "writebmp out");
    return 0;
}

} // namespace paperline
