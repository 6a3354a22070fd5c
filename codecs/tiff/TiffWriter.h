// Encodes a page as a TIFF file: LZW, with the horizontal predictor for grey and colour.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

struct TiffOptions {
    double horizontalDpi = 72;
    double verticalDpi = 72;
    unsigned threads = 0; // 0: one per processor; the file is the same for any number
};

// A file of the same depth as the page: 1 bit (0 is black), 8 bits (grey) or 24 bits (RGB) a pixel.
// Nothing for other depths or when memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeTiff(const BitmapImageRep& page,
                                                             const TiffOptions& options);

} // namespace paperline
