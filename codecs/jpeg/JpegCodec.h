// Encodes and decodes JPEG files by libjpeg-turbo.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace paperline {

struct JpegOptions {
    int quality = 75;            // 1 to 100, libjpeg's scale
    uint16_t horizontalDpi = 72; // stored in the JFIF header
    uint16_t verticalDpi = 72;
};

// Baseline JPEG: grey for pages of 1 and 8 bits a pixel, YCbCr 4:2:0 for 24. Nothing when the page
// has another layout, is larger than 65,500 pixels a side, or memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeJpeg(const BitmapImageRep& page,
                                                             const JpegOptions& options);

// Grey as 8 bits, everything else as 24. Nothing when the data is damaged, ends early, or has more
// than `maximumPixels`, which is checked before memory is allocated for them.
[[nodiscard]] std::optional<DecodedImage> decodeJpeg(std::span<const uint8_t> bytes,
                                                     uint64_t maximumPixels = UINT64_MAX);

} // namespace paperline
