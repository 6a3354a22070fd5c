// From a page to the bytes of a file of the image writer's types.
#pragma once

#include "output/Resolution.h"
#include "platform/BitmapImageRep.h"

#include <cstdint>
#include <string>
#include <vector>

namespace paperline {

// The library's quality that stands for the compression factor 0.25 of saved pages.
inline constexpr int jpegQuality = 60;

struct EncodedPage {
    std::vector<uint8_t> bytes;
    std::string failure; // why there are no bytes; empty on success
};

// A 1, 8 or 24-bit page as `imageType` (output/FileFormats.h) at the given density.
[[nodiscard]] EncodedPage
encodePage(const BitmapImageRep& page, int32_t imageType, Density density);

// Pages of this file-format code can be written whole, joined files included. True for a code
// outside the table, which writes nothing.
bool canWriteFormat(int32_t formatCode);

} // namespace paperline
