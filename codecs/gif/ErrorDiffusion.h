// Maps a page to a palette by error diffusion (Floyd and Steinberg).
#pragma once

#include "codecs/gif/ColourPalette.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

class ErrorDiffusion {
public:
    // A palette of 1 to 256 colours, rows of `widthPixels` pixels.
    ErrorDiffusion(const Palette& palette, int32_t widthPixels);

    // Writes the palette indices of the page's next row of RGB pixels.
    void mapRow(std::span<const uint8_t> rgb, std::span<uint8_t> indices);

private:
    uint8_t findNearest(size_t cell);

    std::array<std::array<int32_t, 3>, mostPaletteColours> colours_{};
    size_t colourCount_;
    std::vector<int16_t> nearest_; // by the upper 5 bits of red, green and blue; -1: unknown
    std::vector<int16_t> errors_;  // in 1/16, for the next row; with a pixel more at both ends
};

} // namespace paperline
