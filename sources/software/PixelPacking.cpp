#include "sources/software/PixelPacking.h"

#include <algorithm>

namespace paperline::sources {

namespace {

uint8_t bitAsGrey(std::span<const uint8_t> row, size_t x) {
    return (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 255 : 0;
}

} // namespace

void packBlackAndWhite(std::span<const uint8_t> grey, std::span<uint8_t> bits) {
    std::fill(bits.begin(), bits.end(), uint8_t{0xff});
    size_t x = 0;
    for (; x + 8 <= grey.size(); x += 8) {
        uint32_t byte = 0;
        for (size_t bit = 0; bit < 8; ++bit)
            byte = byte << 1 | grey[x + bit] >> 7;
        bits[x / 8] = static_cast<uint8_t>(byte);
    }
    for (; x < grey.size(); ++x)
        if (grey[x] < 128)
            bits[x / 8] = static_cast<uint8_t>(bits[x / 8] & ~(0x80 >> x % 8));
}

void rowToGrey(std::span<const uint8_t> row, int bitsPerPixel, std::span<uint8_t> grey) {
    for (size_t x = 0; x < grey.size(); ++x) {
        if (bitsPerPixel == 1)
            grey[x] = bitAsGrey(row, x);
        else if (bitsPerPixel == 8)
            grey[x] = row[x];
        else // luminance; white stays white
            grey[x] = static_cast<uint8_t>(
                (77 * row[3 * x] + 150 * row[3 * x + 1] + 29 * row[3 * x + 2] + 128) >> 8);
    }
}

void rowToColour(std::span<const uint8_t> row, int bitsPerPixel, std::span<uint8_t> colour) {
    if (bitsPerPixel == 24) {
        std::copy_n(row.begin(), colour.size(), colour.begin());
        return;
    }
    for (size_t x = 0; x < colour.size() / 3; ++x) {
        const uint8_t grey = bitsPerPixel == 1 ? bitAsGrey(row, x) : row[x];
        std::fill_n(colour.begin() + static_cast<std::ptrdiff_t>(3 * x), 3, grey);
    }
}

} // namespace paperline::sources
