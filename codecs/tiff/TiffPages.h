// What the TIFF writer and the joiner share: a page's tags, and strips moved without decoding. Only
// the files of the TIFF adapter include this.
#pragma once

#include "codecs/tiff/TiffHandle.h"

#include <cstdint>

namespace paperline {

// A page as this program writes it: LZW strips of whole rows; grey and colour as horizontal
// differences, one-bit pages as they are.
struct TiffPageTags {
    uint32_t widthPixels = 0;
    uint32_t heightPixels = 0;
    uint16_t bitsPerSample = 8;
    uint16_t samplesPerPixel = 1;
    uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    uint32_t rowsPerStrip = 0;
    double horizontalDpi = 72;
    double verticalDpi = 72;
};

// Declares the page to be written next; false on any error.
[[nodiscard]] bool setTiffPageTags(TIFF* tiff, const TiffPageTags& tags);

// The tags of the current page when its strips are what this program would write for it.
[[nodiscard]] bool readOwnTiffPageTags(TIFF* tiff, TiffPageTags& tags);

// Declares the page to be written next exactly like the current page of `from`.
[[nodiscard]] bool copyTiffPageTags(TIFF* from, TIFF* to);

// Bytes of the current page's strips or tiles; 0 when they do not lie within the file.
[[nodiscard]] uint64_t tiffDataBytes(TIFF* tiff);

// Copies the strips or tiles of the current page as they are stored.
[[nodiscard]] bool copyTiffData(TIFF* from, TIFF* to);

} // namespace paperline
