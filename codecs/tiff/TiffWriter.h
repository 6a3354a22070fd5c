// Writes a page as a TIFF file: LZW, with horizontal differences for grey and colour.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

struct TiffOptions {
    double horizontalDpi = 72;
    double verticalDpi = 72;
    unsigned threads = 0; // 0: one per processor; the file is the same for every number
};

// A page of 1 bit (0 is black), 8 bits (grey) or 24 bits (RGB) as a whole file of the same depth;
// nothing for other depths or when the memory cannot be had.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeTiff(const BitmapImageRep& page,
                                                             const TiffOptions& options);

} // namespace paperline
