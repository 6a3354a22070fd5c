// A page's tags, and strips copied without decoding; for the writer and the joiner. Only
// codecs/tiff includes this.
#pragma once

#include "codecs/tiff/TiffHandle.h"

#include <cstdint>

namespace paperline {

// A page as this program writes it: strips of LZW, with the horizontal predictor for grey and
// colour.
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

// Sets the tags of the page to be written next.
[[nodiscard]] bool setTiffPageTags(TIFF* tiff, const TiffPageTags& tags);

// Reads the tags of the current page; false unless its strips are as this program writes them.
[[nodiscard]] bool readOwnTiffPageTags(TIFF* tiff, TiffPageTags& tags);

// Gives the page to be written next all tags of the current page of `from`.
[[nodiscard]] bool copyTiffPageTags(TIFF* from, TIFF* to);

// Total bytes of the current page's strips or tiles; 0 when one lies outside the file.
[[nodiscard]] uint64_t tiffDataBytes(TIFF* tiff);

// Copies the compressed strips or tiles of the current page.
[[nodiscard]] bool copyTiffData(TIFF* from, TIFF* to);

} // namespace paperline
