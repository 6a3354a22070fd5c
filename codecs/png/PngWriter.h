// Encodes a page as a PNG file.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

struct PngOptions {
    double horizontalDpi = 72; // stored as whole pixels a metre
    double verticalDpi = 72;
    unsigned threads = 0; // 0: one per processor; the file is the same for any number
};

// A file of the same depth as the page: 1 bit (0 is black), 8 bits (grey) or 24 bits (RGB) a pixel.
// Nothing for other depths, for sides that PNG cannot hold, or when memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodePng(const BitmapImageRep& page,
                                                            const PngOptions& options);

} // namespace paperline
