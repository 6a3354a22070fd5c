// Reduces a page's colours to a palette.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace paperline {

struct PaletteColour {
    uint8_t red = 0, green = 0, blue = 0;

    uint32_t key() const { return uint32_t{red} << 16 | uint32_t{green} << 8 | blue; }
    bool operator==(const PaletteColour&) const = default;
};

inline constexpr size_t mostPaletteColours = 256;
using Palette = std::vector<PaletteColour>;

// The colours of a 24-bit page in the order of their first appearance; empty when there are more
// than 256.
Palette coloursOfPage(const BitmapImageRep& page);

// Up to 256 colours for a 24-bit page, by Wu's method: the colour space is cut into boxes along its
// axes, always by the cut that removes most of the squared error, and each box yields its mean.
// Looks at a quarter of the pixels.
Palette choosePalette(const BitmapImageRep& page);

} // namespace paperline
