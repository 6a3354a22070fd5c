// Few colours for a page of many.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace paperline {

struct PaletteColour {
    uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const PaletteColour&) const = default;
};

inline constexpr size_t mostPaletteColours = 256;
using Palette = std::vector<PaletteColour>;

// The colours of a 24-bit page, in the order in which they first appear; empty when there are more
// than 256.
Palette coloursOfPage(const BitmapImageRep& page);

// Up to 256 colours that stand for those of a 24-bit page with the smallest squared error that
// cutting the colour space along its axes can reach (after Wu): the box whose best cut takes away
// most of the error is cut next, and each box gives its mean. A quarter of the pixels is looked at.
Palette choosePalette(const BitmapImageRep& page);

} // namespace paperline
