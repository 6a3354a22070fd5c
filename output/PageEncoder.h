// From a page to the bytes of a file of the image writer's types, and which formats can be had.
#pragma once

#include "output/PageCodecs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace paperline {

struct EncodedPage {
    std::vector<uint8_t> bytes;
    std::string failure; // why there are no bytes; empty on success
};

// A 1, 8 or 24-bit page as `imageType` (base/FileFormats.h) at the given density.
[[nodiscard]] EncodedPage encodePage(const PageCodecs& codecs,
                                     const BitmapImageRep& page,
                                     int32_t imageType,
                                     Density density);

// Pages of this file-format code can be written whole, joined files included. True for a code
// outside the table, which writes nothing.
bool canWriteFormat(const PageCodecs& codecs, int32_t formatCode);

} // namespace paperline
