// Some rows of a page while they are drawn, grey or RGB.
#pragma once

#include "sources/software/StrokeFont.h"

#include <cstdint>
#include <span>
#include <vector>

namespace paperline::sources {

// Between 0 and 248, so that scanner noise (0 to 7) can be added without carrying over.
struct Ink {
    uint8_t red = 0, green = 0, blue = 0;

    uint8_t grey() const { return static_cast<uint8_t>((77 * red + 150 * green + 29 * blue) >> 8); }
};

// Right and bottom are one past the last pixel.
struct PixelRect {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
};

// How much of each pixel a shape covers, 0 to 255, placed relative to the shape's origin.
struct CoverageMask {
    int32_t left = 0, top = 0, width = 0, height = 0;
    std::vector<uint8_t> coverage;
};

// Lines drawn with a round pen of this width (in the strokes' own units, y upwards).
CoverageMask
penMask(const std::vector<Stroke>& strokes, double pixelsPerUnit, double penWidthUnits);

class BandCanvas {
public:
    // `pixels` holds rowCount rows of widthPixels pixels of 1 or 3 samples; firstRow is their place
    // on the page.
    BandCanvas(std::span<uint8_t> pixels,
               int32_t widthPixels,
               int samplesPerPixel,
               int32_t firstRow);

    int32_t firstRow() const { return firstRow_; }
    int32_t endRow() const { return firstRow_ + rowCount_; }
    // The part of the area that lies in the band; empty ones may have their ends in front.
    PixelRect visible(PixelRect area) const;

    void fill(Ink ink) { rectangle({0, firstRow_, widthPixels_, endRow()}, ink); }
    void rectangle(PixelRect area, Ink ink);
    void cover(const CoverageMask& mask, int32_t x, int32_t y, Ink ink);
    // `y` counts from the page's top and lies within the band.
    void setPixel(int32_t x, int32_t y, Ink ink);

private:
    uint8_t* pixel(int32_t x, int32_t y);
    void coverRow(std::span<const uint8_t> coverage, uint8_t* at, Ink ink) const;

    std::span<uint8_t> pixels_;
    int32_t widthPixels_;
    int samples_;
    int32_t firstRow_;
    int32_t rowCount_;
};

} // namespace paperline::sources
