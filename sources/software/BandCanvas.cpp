#include "sources/software/BandCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace paperline::sources {

namespace {

struct Segment {
    double x0, y0, x1, y1; // pixels, y downwards
};

double squaredDistanceTo(const Segment& segment, double x, double y) {
    const double dx = segment.x1 - segment.x0;
    const double dy = segment.y1 - segment.y0;
    const double length2 = dx * dx + dy * dy;
    const double along =
        length2 > 0 ? ((x - segment.x0) * dx + (y - segment.y0) * dy) / length2 : 0;
    const double t = std::clamp(along, 0.0, 1.0);
    const double offX = x - segment.x0 - t * dx;
    const double offY = y - segment.y0 - t * dy;
    return offX * offX + offY * offY;
}

std::vector<Segment> segmentsOf(const std::vector<Stroke>& strokes, double pixelsPerUnit) {
    std::vector<Segment> segments;
    for (const Stroke& stroke : strokes)
        for (size_t i = 0; i + 1 < stroke.size(); ++i)
            segments.push_back({stroke[i].x * pixelsPerUnit,
                                -stroke[i].y * pixelsPerUnit,
                                stroke[i + 1].x * pixelsPerUnit,
                                -stroke[i + 1].y * pixelsPerUnit});
    return segments;
}

// The pixels that the pen may touch.
PixelRect bounds(const Segment& segment, double reach) {
    return {static_cast<int32_t>(std::floor(std::min(segment.x0, segment.x1) - reach)),
            static_cast<int32_t>(std::floor(std::min(segment.y0, segment.y1) - reach)),
            static_cast<int32_t>(std::ceil(std::max(segment.x0, segment.x1) + reach)) + 1,
            static_cast<int32_t>(std::ceil(std::max(segment.y0, segment.y1) + reach)) + 1};
}

void drawSegment(CoverageMask& mask, const Segment& segment, double radius) {
    const PixelRect area = bounds(segment, radius + 0.5);
    for (int32_t y = area.top; y < area.bottom; ++y)
        for (int32_t x = area.left; x < area.right; ++x) {
            const double distance2 = squaredDistanceTo(segment, x + 0.5, y + 0.5);
            if (distance2 >= (radius + 0.5) * (radius + 0.5))
                continue;
            const double covered = std::min(radius + 0.5 - std::sqrt(distance2), 1.0);
            const auto index = static_cast<size_t>(y - mask.top) * static_cast<size_t>(mask.width) +
                               static_cast<size_t>(x - mask.left);
            mask.coverage[index] =
                std::max(mask.coverage[index], static_cast<uint8_t>(covered * 255 + 0.5));
        }
}

uint8_t blended(uint8_t below, uint8_t ink, uint32_t coverage) {
    // Division by 255 without dividing, exact for 0 and 255.
    const uint32_t sum = below * (255 - coverage) + ink * coverage + 128;
    return static_cast<uint8_t>((sum + (sum >> 8)) >> 8);
}

} // namespace

CoverageMask
penMask(const std::vector<Stroke>& strokes, double pixelsPerUnit, double penWidthUnits) {
    const std::vector<Segment> segments = segmentsOf(strokes, pixelsPerUnit);
    CoverageMask mask;
    if (segments.empty())
        return mask;
    // Thin pens draw light lines, but not invisible ones.
    const double radius = std::max(penWidthUnits * pixelsPerUnit, 0.6) / 2;
    PixelRect area{std::numeric_limits<int32_t>::max(),
                   std::numeric_limits<int32_t>::max(),
                   std::numeric_limits<int32_t>::min(),
                   std::numeric_limits<int32_t>::min()};
    for (const Segment& segment : segments) {
        const PixelRect own = bounds(segment, radius + 0.5);
        area = {std::min(area.left, own.left),
                std::min(area.top, own.top),
                std::max(area.right, own.right),
                std::max(area.bottom, own.bottom)};
    }
    mask = {area.left, area.top, area.right - area.left, area.bottom - area.top, {}};
    mask.coverage.resize(static_cast<size_t>(mask.width) * static_cast<size_t>(mask.height));
    for (const Segment& segment : segments)
        drawSegment(mask, segment, radius);
    return mask;
}

BandCanvas::BandCanvas(std::span<uint8_t> pixels,
                       int32_t widthPixels,
                       int samplesPerPixel,
                       int32_t firstRow)
    : pixels_(pixels), widthPixels_(widthPixels), samples_(samplesPerPixel), firstRow_(firstRow),
      rowCount_(static_cast<int32_t>(pixels.size() / static_cast<size_t>(widthPixels) /
                                     static_cast<size_t>(samplesPerPixel))) {}

uint8_t* BandCanvas::pixel(int32_t x, int32_t y) {
    const auto index = (static_cast<size_t>(y - firstRow_) * static_cast<size_t>(widthPixels_) +
                        static_cast<size_t>(x)) *
                       static_cast<size_t>(samples_);
    return pixels_.data() + index;
}

void BandCanvas::setPixel(int32_t x, int32_t y, Ink ink) {
    uint8_t* at = pixel(x, y);
    if (samples_ == 1) {
        at[0] = ink.grey();
        return;
    }
    at[0] = ink.red;
    at[1] = ink.green;
    at[2] = ink.blue;
}

PixelRect BandCanvas::visible(PixelRect area) const {
    return {std::max(area.left, 0),
            std::max(area.top, firstRow()),
            std::min(area.right, widthPixels_),
            std::min(area.bottom, endRow())};
}

void BandCanvas::rectangle(PixelRect area, Ink ink) {
    const auto [left, top, right, bottom] = visible(area);
    if (left >= right || top >= bottom)
        return;
    const auto byteCount = static_cast<size_t>(right - left) * static_cast<size_t>(samples_);
    if (samples_ == 1)
        std::memset(pixel(left, top), ink.grey(), byteCount);
    else
        for (int32_t x = left; x < right; ++x)
            setPixel(x, top, ink);
    for (int32_t y = top + 1; y < bottom; ++y)
        std::memcpy(pixel(left, y), pixel(left, top), byteCount);
}

void BandCanvas::coverRow(std::span<const uint8_t> coverage, uint8_t* at, Ink ink) const {
    const uint8_t grey = ink.grey();
    for (const uint8_t covered : coverage) {
        if (covered != 0 && samples_ == 1) {
            at[0] = blended(at[0], grey, covered);
        } else if (covered != 0) {
            at[0] = blended(at[0], ink.red, covered);
            at[1] = blended(at[1], ink.green, covered);
            at[2] = blended(at[2], ink.blue, covered);
        }
        at += samples_;
    }
}

void BandCanvas::cover(const CoverageMask& mask, int32_t x, int32_t y, Ink ink) {
    const PixelRect area{
        x + mask.left, y + mask.top, x + mask.left + mask.width, y + mask.top + mask.height};
    const auto [left, top, right, bottom] = visible(area);
    if (left >= right)
        return;
    for (int32_t row = top; row < bottom; ++row) {
        const auto start = static_cast<size_t>(row - area.top) * static_cast<size_t>(mask.width) +
                           static_cast<size_t>(left - area.left);
        coverRow(std::span(mask.coverage).subspan(start, static_cast<size_t>(right - left)),
                 pixel(left, row),
                 ink);
    }
}

} // namespace paperline::sources
