#include "codecs/gif/ErrorDiffusion.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr int bitsPerAxis = 5;
constexpr int cellWidth = 1 << (8 - bitsPerAxis);
constexpr size_t cellCount = size_t{1} << (3 * bitsPerAxis);

int32_t middleOfCell(size_t cell, int shift) {
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

// A sample and its sixteenths, rounded and kept within a byte.
int32_t corrected(uint8_t sample, int32_t sixteenths) {
    return std::clamp(sample + ((sixteenths + 8) >> 4), 0, 255);
}

void store(int16_t* place, const Colour& colour) {
    place[0] = static_cast<int16_t>(colour.red);
    place[1] = static_cast<int16_t>(colour.green);
    place[2] = static_cast<int16_t>(colour.blue);
}

} // namespace

ErrorDiffusion::ErrorDiffusion(const Palette& palette, int32_t widthPixels)
    : colourCount_(palette.size()), nearest_(cellCount, -1),
      missed_((static_cast<size_t>(widthPixels) + 2) * 3) {
    for (size_t place = 0; place < palette.size(); ++place)
        colours_[place] = {palette[place].red, palette[place].green, palette[place].blue};
}

// Pages visit few of the cells: each is looked up when it is first met.
uint8_t ErrorDiffusion::findNearest(size_t cell) {
    const int32_t red = middleOfCell(cell, 2 * bitsPerAxis);
    const int32_t green = middleOfCell(cell, bitsPerAxis);
    const int32_t blue = middleOfCell(cell, 0);
    std::array<int32_t, mostPaletteColours> distances{};
    for (size_t place = 0; place < colourCount_; ++place) {
        const auto& colour = colours_[place];
        distances[place] = (red - colour[0]) * (red - colour[0]) +
                           (green - colour[1]) * (green - colour[1]) +
                           (blue - colour[2]) * (blue - colour[2]);
    }
    const auto end = distances.begin() + static_cast<std::ptrdiff_t>(colourCount_);
    const auto found = std::min_element(distances.begin(), end) - distances.begin();
    nearest_[cell] = static_cast<int16_t>(found);
    return static_cast<uint8_t>(found);
}

void ErrorDiffusion::mapRow(std::span<const uint8_t> rgb, std::span<uint8_t> indices) {
    Colour right;        // for the next pixel of this row
    Colour below, after; // for the next row: gathered so far for this column and the one after it
    int16_t* missed = missed_.data() + 3;
    const uint8_t* pixel = rgb.data();
    for (uint8_t& index : indices) {
        const int32_t red = corrected(pixel[0], right.red + missed[0]);
        const int32_t green = corrected(pixel[1], right.green + missed[1]);
        const int32_t blue = corrected(pixel[2], right.blue + missed[2]);
        const size_t cell = cellOf(red, green, blue);
        const int16_t known = nearest_[cell];
        index = known >= 0 ? static_cast<uint8_t>(known) : findNearest(cell);
        const auto& given = colours_[index];
        const Colour error{red - given[0], green - given[1], blue - given[2]};
        store(missed - 3, below + error * 3);
        below = after + error * 5;
        after = error;
        right = error * 7;
        pixel += 3;
        missed += 3;
    }
    store(missed - 3, below);
}

} // namespace paperline
