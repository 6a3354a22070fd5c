#include "output/PageEncoder.h"

#include "output/FileFormats.h"
#include "platform/JpegCodec.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace paperline {

namespace {

// JFIF holds whole dots per inch of 16 bits.
uint16_t storedDpi(double dpi) {
    return static_cast<uint16_t>(std::lround(std::clamp(dpi, 1.0, 65535.0)));
}

EncodedPage finished(std::optional<std::vector<uint8_t>> bytes) {
    if (!bytes)
        return {{}, "the page cannot be encoded"};
    return {std::move(*bytes), {}};
}

} // namespace

EncodedPage encodePage(const BitmapImageRep& page, int32_t imageType, Density density) {
    switch (imageType) {
    case imageTypeJpeg:
        return finished(encodeJpeg(page,
                                   {.quality = jpegQuality,
                                    .horizontalDpi = storedDpi(density.horizontalDpi),
                                    .verticalDpi = storedDpi(density.verticalDpi)}));
    default:
        return {{}, "there is no encoder for this type"};
    }
}

bool canWriteFormat(int32_t formatCode) {
    return fileFormatOf(formatCode) == nullptr || formatCode == formatBmp ||
           formatCode == formatJpeg;
}

} // namespace paperline
