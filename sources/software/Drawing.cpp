#include "sources/software/Drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace paperline::sources {

namespace {

constexpr double millimetresPerPoint = millimetresPerInch / 72;
constexpr double regularPen = 1.35; // font units
constexpr double boldPen = 2.3;

double millimetresPerUnit(Font font) {
    return font.sizePoints * millimetresPerPoint / fontUnitsPerEm;
}

} // namespace

int32_t Drawing::pixels(double millimetres) const {
    return static_cast<int32_t>(std::lround(millimetres * pixelsPerMillimetre_));
}

void Drawing::rectangle(double left, double top, double width, double height, Ink ink) {
    Box box{{pixels(left), pixels(top), pixels(left + width), pixels(top + height)}, ink};
    // Thin rules stay visible at low resolutions.
    box.area.right = std::max(box.area.right, box.area.left + 1);
    box.area.bottom = std::max(box.area.bottom, box.area.top + 1);
    items_.push_back({box.area.top, box.area.bottom, box});
}

double Drawing::textWidth(std::string_view text, Font font) {
    return sources::textWidth(text) * millimetresPerUnit(font);
}

std::shared_ptr<const CoverageMask> Drawing::glyphMask(char character, Font font) {
    auto& mask = glyphs_[{character, font.sizePoints, font.bold}];
    if (!mask)
        mask = std::make_shared<const CoverageMask>(
            penMask(glyphStrokes(character).strokes,
                    millimetresPerUnit(font) * pixelsPerMillimetre_,
                    font.bold ? boldPen : regularPen));
    return mask;
}

void Drawing::addShape(std::shared_ptr<const CoverageMask> mask, int32_t x, int32_t y, Ink ink) {
    const int32_t top = y + mask->top;
    const int32_t bottom = top + mask->height;
    items_.push_back({top, bottom, Shape{std::move(mask), x, y, ink}});
}

void Drawing::text(
    double x, double baseline, std::string_view text, Font font, Ink ink, Align align) {
    if (align != Align::left)
        x -= textWidth(text, font) * (align == Align::right ? 1 : 0.5);
    for (const char character : text) {
        if (character != ' ')
            addShape(glyphMask(character, font), pixels(x), pixels(baseline), ink);
        x += glyphStrokes(character).advance * millimetresPerUnit(font);
    }
}

void Drawing::line(const Stroke& points, double penWidth, Ink ink) {
    Stroke upwards = points;
    for (StrokePoint& point : upwards)
        point.y = -point.y;
    addShape(
        std::make_shared<const CoverageMask>(penMask({upwards}, pixelsPerMillimetre_, penWidth)),
        0,
        0,
        ink);
}

void Drawing::photograph(double left, double top, double width, double height) {
    const PixelRect area{pixels(left), pixels(top), pixels(left + width), pixels(top + height)};
    if (area.left < area.right && area.top < area.bottom)
        items_.push_back(
            {area.top, area.bottom, Photograph{std::make_shared<const Landscape>(area)}});
}

void Drawing::paint(BandCanvas& canvas, bool blackAndWhite) const {
    for (const Item& item : items_) {
        if (item.bottom <= canvas.firstRow() || item.top >= canvas.endRow())
            continue;
        if (const auto* box = std::get_if<Box>(&item.what))
            canvas.rectangle(box->area, box->ink);
        else if (const auto* shape = std::get_if<Shape>(&item.what))
            canvas.cover(*shape->mask, shape->x, shape->y, shape->ink);
        else
            std::get<Photograph>(item.what).landscape->paint(canvas, blackAndWhite);
    }
}

} // namespace paperline::sources
