// The headers of Windows bitmap files: BITMAPFILEHEADER (14 bytes), then BITMAPINFOHEADER (40).
#pragma once

#include "codecs/pixels/PageProperties.h"
#include "platform/files/ByteReader.h"

#include <optional>

namespace paperline {

inline constexpr uint32_t bmpFileHeaderBytes = 14;
inline constexpr uint32_t bmpInfoHeaderBytes = 40;
inline constexpr uint32_t bmpHeaderBytes = bmpFileHeaderBytes + bmpInfoHeaderBytes;

// Offsets of the fields of both, which are little-endian.
enum BmpField : size_t {
    bfType = 0,
    bfSize = 2,
    bfOffBits = 10,
    biSize = 14,
    biWidth = 18,
    biHeight = 22,
    biPlanes = 26,
    biBitCount = 28,
    biCompression = 30,
    biSizeImage = 34,
    biXPelsPerMeter = 38,
    biYPelsPerMeter = 42,
    biClrUsed = 46,
    biClrImportant = 50,
};

struct BmpHeader {
    PictureHeader picture;
    uint32_t pixelOffset = 0; // of the first stored row
    bool isOwnColour = false; // as this program writes it: 24 bits, uncompressed, bottom row first
};

// Nothing when the headers are incomplete. BITMAPCOREHEADER and longer information headers are
// read, too.
[[nodiscard]] std::optional<BmpHeader> readBmpHeader(ByteReader& file);

} // namespace paperline
