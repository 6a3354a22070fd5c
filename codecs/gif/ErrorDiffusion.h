// Puts a palette's colours in place of a page's, so that areas keep their mean colour.
#pragma once

#include "codecs/gif/ColourPalette.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

class ErrorDiffusion {
public:
    // 1 to 256 colours; rows are `widthPixels` wide.
    ErrorDiffusion(const Palette& palette, int32_t widthPixels);

    // The next row, RGB, as places in the palette. What a pixel misses goes to its neighbours to
    // the right and below, by the weights of Floyd and Steinberg.
    void mapRow(std::span<const uint8_t> rgb, std::span<uint8_t> indices);

private:
    uint8_t findNearest(size_t cell);

    std::array<std::array<int32_t, 3>, mostPaletteColours> colours_{};
    size_t colourCount_;
    std::vector<int16_t> nearest_; // by the upper 5 bits of red, green and blue; -1: not asked yet
    std::vector<int16_t> missed_;  // sixteenths, for the next row; a pixel more at both ends
};

} // namespace paperline
