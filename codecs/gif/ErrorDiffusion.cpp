#include "codecs/gif/ErrorDiffusion.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr int bitsPerAxis = 5;
constexpr int cellWidth = 1 << (8 - bitsPerAxis);
constexpr size_t cellCount = size_t{1} << (3 * bitsPerAxis);

int32_t centreOfCell(size_t cell, int shift) {
    return static_cast<int32_t>(cell >> shift & 31U) * cellWidth + cellWidth / 2;
}

size_t cellOf(int32_t red, int32_t green, int32_t blue) {
    return static_cast<size_t>(red >> 3 << 10 | green >> 3 << 5 | blue >> 3);
}

struct Colour {
    int32_t red = 0, green = 0, blue = 0;

    Colour operator+(const Colour& other) const {
        return {red + other.red, green + other.green, blue + other.blue};
    }
    Colour operator*(int32_t factor) const { return {red * factor, green * factor, blue * factor}; }
};

// A sample plus an error in 1/16, rounded and clamped.
int32_t corrected(uint8_t sample, int32_t sixteenths) {
    return std::clamp(sample + ((sixteenths + 8) >> 4), 0, 255);
}

void store(int16_t* target, const Colour& colour) {
    target[0] = static_cast<int16_t>(colour.red);
    target[1] = static_cast<int16_t>(colour.green);
    target[2] = static_cast<int16_t>(colour.blue);
}

} // namespace

ErrorDiffusion::ErrorDiffusion(const Palette& palette, int32_t widthPixels)
    : colourCount_(palette.size()), nearest_(cellCount, -1),
      errors_((static_cast<size_t>(widthPixels) + 2) * 3) {
    for (size_t index = 0; index < palette.size(); ++index)
        colours_[index] = {palette[index].red, palette[index].green, palette[index].blue};
}

// Called once for each cell that the page visits; most it does not.
uint8_t ErrorDiffusion::findNearest(size_t cell) {
    const int32_t red = centreOfCell(cell, 2 * bitsPerAxis);
    const int32_t green = centreOfCell(cell, bitsPerAxis);
    const int32_t blue = centreOfCell(cell, 0);
    std::array<int32_t, mostPaletteColours> distances{};
    for (size_t index = 0; index < colourCount_; ++index) {
        const auto& colour = colours_[index];
        distances[index] = (red - colour[0]) * (red - colour[0]) +
                           (green - colour[1]) * (green - colour[1]) +
                           (blue - colour[2]) * (blue - colour[2]);
    }
    const auto end = distances.begin() + static_cast<std::ptrdiff_t>(colourCount_);
    const auto found = std::min_element(distances.begin(), end) - distances.begin();
    nearest_[cell] = static_cast<int16_t>(found);
    return static_cast<uint8_t>(found);
}

void ErrorDiffusion::mapRow(std::span<const uint8_t> rgb, std::span<uint8_t> indices) {
    Colour right;            // for the next pixel
    Colour below, belowNext; // for the next row, gathered so far: this column and the next one
    int16_t* errors = errors_.data() + 3;
    const uint8_t* pixel = rgb.data();
    for (uint8_t& index : indices) {
        const int32_t red = corrected(pixel[0], right.red + errors[0]);
        const int32_t green = corrected(pixel[1], right.green + errors[1]);
        const int32_t blue = corrected(pixel[2], right.blue + errors[2]);
        const size_t cell = cellOf(red, green, blue);
        const int16_t known = nearest_[cell];
        index = known >= 0 ? static_cast<uint8_t>(known) : findNearest(cell);
        const auto& given = colours_[index];
        const Colour error{red - given[0], green - given[1], blue - given[2]};
        store(errors - 3, below + error * 3);
        below = belowNext + error * 5;
        belowNext = error;
        right = error * 7;
        pixel += 3;
        errors += 3;
    }
    store(errors - 3, below);
}

} // namespace paperline
