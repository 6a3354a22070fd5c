// JPEG files by libjpeg-turbo.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"
#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace paperline {

struct JpegOptions {
    int quality = 75;            // 1 to 100, the library's own scale
    uint16_t horizontalDpi = 72; // stored in the JFIF header
    uint16_t verticalDpi = 72;
};

// A baseline JPEG of a 1, 8 or 24-bit page: grey for 1 and 8 bits, YCbCr 4:2:0 for 24. Nothing when
// the page has another layout, is larger than 65,500 pixels a side, or memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeJpeg(const BitmapImageRep& page,
                                                             const JpegOptions& options);

// With a known resolution the image's size in points follows from it.
// `scaleDenominator` 1, 2, 4 or 8 decodes at reduced size. Damaged data gives nothing; data that
// ends early is damaged.
[[nodiscard]] std::optional<DecodedImage> decodeJpeg(std::span<const uint8_t> bytes,
                                                     int scaleDenominator = 1);

// Pixels of the image as its header says; nothing when the header is damaged.
[[nodiscard]] std::optional<Size> jpegPixelSize(std::span<const uint8_t> bytes);

} // namespace paperline
