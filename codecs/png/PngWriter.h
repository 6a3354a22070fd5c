// Writes a page as a PNG file.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

struct PngOptions {
    double horizontalDpi = 72; // the file holds whole pixels a metre
    double verticalDpi = 72;
    unsigned threads = 0; // 0: one per processor; the file is the same for every number
};

// A page of 1 bit (0 is black), 8 bits (grey) or 24 bits (RGB) as a whole file of the same depth;
// nothing for other depths, for sides that PNG cannot hold, or when the memory cannot be had.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodePng(const BitmapImageRep& page,
                                                            const PngOptions& options);

} // namespace paperline
