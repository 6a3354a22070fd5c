// Resolutions as devices report them and as files record them.
#pragma once

#include "codecs/pixels/Geometry.h"

#include <cstdint>

namespace paperline {

// Dots per inch of a fixed-point value: whole + 1 / fraction (not fraction / 65536), a fraction of
// 0 adding nothing.
float resolutionOfFixedPoint(int16_t whole, uint16_t fraction);

// Truncated to whole dots per inch; anything below 1, and what is no number, counts as 72.
int32_t wholeDpi(float resolutionDpi);

// Page size in points, each side pixels x 72 / dpi rounded up in single precision.
Size pointsOfPage(int32_t pixelsWide, int32_t pixelsHigh, int32_t resolutionDpi);
Size pointsOfPage(Size pixels, int32_t resolutionDpi);

// Dots per inch that files record.
struct Density {
    double horizontalDpi = 72;
    double verticalDpi = 72;
    bool operator==(const Density&) const = default;
};

// Pixels x 72 / points: what an encoder finds when it looks at a page of that size.
Density densityOfPage(int32_t pixelsWide, int32_t pixelsHigh, Size sizePoints);

} // namespace paperline
