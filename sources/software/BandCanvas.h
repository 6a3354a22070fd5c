// A band of a page's rows while it is drawn, grey or RGB.
#pragma once

#include "sources/software/PixelPacking.h"
#include "sources/software/StrokeFont.h"

#include <cstdint>
#include <span>
#include <vector>

namespace paperline::sources {

// Samples from 0 to 248, which leaves room for scanner noise from 0 to 7.
struct Ink {
    uint8_t red = 0, green = 0, blue = 0;

    uint8_t grey() const { return static_cast<uint8_t>(luminance256(red, green, blue) >> 8); }
};

// Right and bottom are one past the last pixel.
struct PixelRect {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
};

// How much of each pixel a shape covers, 0 to 255; left and top are relative to the shape's origin.
struct CoverageMask {
    int32_t left = 0, top = 0, width = 0, height = 0;
    std::vector<uint8_t> coverage;
};

// Strokes drawn with a round pen; its width is in the strokes' units.
CoverageMask
penMask(const std::vector<Stroke>& strokes, double pixelsPerUnit, double penWidthUnits);

class BandCanvas {
public:
    // `pixels` holds whole rows of 1 or 3 samples a pixel, from the page's row `firstRow` on.
    BandCanvas(std::span<uint8_t> pixels,
               int32_t widthPixels,
               int samplesPerPixel,
               int32_t firstRow);

    int32_t firstRow() const { return firstRow_; }
    int32_t endRow() const { return firstRow_ + rowCount_; }
    // The part of the area inside the band; of an empty one right or bottom may be less than left
    // or top.
    PixelRect visible(PixelRect area) const;

    void fill(Ink ink) { rectangle({0, firstRow_, widthPixels_, endRow()}, ink); }
    void rectangle(PixelRect area, Ink ink);
    void cover(const CoverageMask& mask, int32_t x, int32_t y, Ink ink);
    // Coordinates of the page; inside the band.
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
