// Converts rows of pixels from one depth to another.
#pragma once

#include <cstdint>
#include <span>

namespace paperline::sources {

// Luminance in 1/256, by the weights of ITU-R BT.601.
constexpr uint32_t luminance256(uint32_t red, uint32_t green, uint32_t blue) {
    return 77 * red + 150 * green + 29 * blue;
}

// Grey samples to bits, the first pixel in the highest bit: below 128 is 0, black. Bits after the
// last pixel are white.
void packBlackAndWhite(std::span<const uint8_t> grey, std::span<uint8_t> bits);

// One row of 1, 8 or 24 bits a pixel as grey samples.
void rowToGrey(std::span<const uint8_t> row, int bitsPerPixel, std::span<uint8_t> grey);

// One row of 1, 8 or 24 bits a pixel as RGB samples.
void rowToColour(std::span<const uint8_t> row, int bitsPerPixel, std::span<uint8_t> colour);

} // namespace paperline::sources
