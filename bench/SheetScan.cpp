#include "bench/SheetScan.h"

#include "bench/PhotographGrain.h"
#include "bench/Random.h"
#include "sources/software/BandCanvas.h"
#include "sources/software/PixelPacking.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace paperline::bench {

namespace {

constexpr sources::Ink paper{244, 243, 238};
constexpr sources::Ink brightWhite{248, 248, 248};

int32_t pixelsOf(double millimetres, double dpi) {
    return static_cast<int32_t>(std::lround(millimetres / 25.4 * dpi));
}

// The lens spreads each point over its neighbours: 1-2-1 to the right and downwards.
void blur(BitmapImageRep& page) {
    const auto step = static_cast<size_t>(page.samplesPerPixel());
    const auto rowBytes = static_cast<size_t>(page.bytesPerRow());
    std::vector<uint8_t> above(rowBytes), here(rowBytes);
    const auto soften = [](unsigned before, unsigned at, unsigned after) {
        return static_cast<uint8_t>((before + 2 * at + after + 2) / 4);
    };
    for (int32_t y = 0; y < page.pixelsHigh(); ++y) {
        const std::span<uint8_t> row = page.row(y);
        std::memcpy(here.data(), row.data(), rowBytes);
        if (y == 0)
            above = here;
        const std::span<const uint8_t> below = y + 1 < page.pixelsHigh() ? page.row(y + 1) : row;
        for (size_t at = 0; at < rowBytes; ++at)
            row[at] = soften(above[at], here[at], below[at]);
        std::swap(above, here);
        std::memcpy(here.data(), row.data(), rowBytes);
        for (size_t at = step; at + step < rowBytes; ++at)
            row[at] = soften(here[at - step], here[at], here[at + step]);
    }
}

// Binomial noise of standard deviation 2: the set bits among 16.
void addNoise(std::span<uint8_t> samples, Random& random) {
    for (size_t at = 0; at < samples.size(); at += 4) {
        uint64_t bits = random.bits();
        const size_t end = std::min(at + 4, samples.size());
        for (size_t each = at; each < end; ++each, bits >>= 16) {
            const int level = samples[each] + std::popcount(bits & 0xFFFF) - 8;
            samples[each] = static_cast<uint8_t>(std::clamp(level, 0, 255));
        }
    }
}

// Dust: black dots of one pixel, one on about 30,000.
void addDust(BitmapImageRep& grey, Random& random) {
    const std::span<uint8_t> samples = grey.bitmapData();
    const size_t dots = samples.size() / 30000;
    for (size_t dot = 0; dot < dots; ++dot)
        samples[random.bits() % samples.size()] = 0;
}

std::shared_ptr<BitmapImageRep> blackAndWhite(const BitmapImageRep& grey) {
    auto page = BitmapImageRep::makePage(grey.pixelsWide(), grey.pixelsHigh(), 1);
    for (int32_t y = 0; page != nullptr && y < grey.pixelsHigh(); ++y)
        sources::packBlackAndWhite(grey.row(y), page->row(y));
    return page;
}

} // namespace

std::shared_ptr<BitmapImageRep>
scanSheet(const Sheet& sheet, double dpi, int bitsPerPixel, uint64_t seed) {
    const bool bilevel = bitsPerPixel == 1;
    auto page = BitmapImageRep::makePage(pixelsOf(sheetWidthMillimetres, dpi),
                                         pixelsOf(sheetHeightMillimetres, dpi),
                                         bilevel ? 8 : bitsPerPixel);
    if (page == nullptr)
        return nullptr;
    sources::BandCanvas canvas(page->bitmapData(), page->pixelsWide(), page->samplesPerPixel(), 0);
    canvas.fill(bilevel ? brightWhite : paper);
    sheet.drawing.paint(canvas, bilevel);
    Random random(seed);
    if (bilevel) {
        addDust(*page, random);
    } else {
        for (const PhotographPlace& place : sheet.photographs)
            addGrain(*page, place, dpi);
        blur(*page);
    }
    addNoise(page->bitmapData(), random);
    return bilevel ? blackAndWhite(*page) : page;
}

} // namespace paperline::bench
