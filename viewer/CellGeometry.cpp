#include "viewer/CellGeometry.h"

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

constexpr double thumbnailMargin = 5;
constexpr float thumbnailExtent = 123.0F;
constexpr double landscapeWidth = 128;
constexpr double landscapeLeft = 45;
constexpr double portraitTop = 25;
constexpr double titleLeft = 138;
constexpr uint64_t centredCharacters = 20;
constexpr double halfCharacterWidth = 3;
constexpr double captionDrop = 128;
constexpr double captionDropBelowTallThumbnail = 146;
// Painters compute with 16 to 24 bits; no cell is larger or farther away than this.
constexpr double drawingRange = 8'000'000;

} // namespace

Rect imageRectForBounds(const Rect& bounds, PixelSize page) {
    const auto w = static_cast<float>(page.width);
    const auto h = static_cast<float>(page.height);
    Rect rect;
    if (h > w) {
        const float width = thumbnailExtent * (w / h);
        rect.width = static_cast<double>(width);
        rect.height = static_cast<double>(thumbnailExtent);
        rect.x = bounds.x + thumbnailMargin + (std::trunc(bounds.width) - rect.width) / 2;
        rect.y = bounds.y + portraitTop;
        return rect;
    }
    const float height = thumbnailExtent * (h / w);
    rect.width = landscapeWidth;
    rect.height = static_cast<double>(height);
    rect.x = bounds.x + landscapeLeft;
    rect.y = bounds.y + thumbnailMargin + (std::trunc(bounds.height) - rect.height) / 2;
    return rect;
}

Rect titleRectForBounds(const Rect& bounds, Size titleText) {
    Rect rect;
    rect.x = bounds.x + titleLeft;
    rect.y = bounds.y + thumbnailMargin;
    rect.width = std::min(titleText.width, std::max(0.0, bounds.x + bounds.width - rect.x));
    rect.height = titleText.height;
    return rect;
}

Rect subtitleRectForBounds(const Rect& bounds,
                           const Rect& titleBounds,
                           const Rect& imageBounds,
                           uint64_t characterCount) {
    if (characterCount == 0)
        return {};
    const uint64_t missingCharacters = centredCharacters - characterCount; // wraps past 20
    Rect rect;
    rect.x = titleBounds.x / 3 + static_cast<double>(missingCharacters) * halfCharacterWidth;
    const double titleBottom = titleBounds.y + titleBounds.height + thumbnailMargin;
    rect.y = titleBottom + captionDrop;
    if (imageBounds.y + imageBounds.height >= rect.y)
        rect.y = titleBottom + captionDropBelowTallThumbnail;
    rect.width = bounds.width;
    if (rect.x > bounds.x)
        rect.width -= rect.x - bounds.x;
    rect.height = bounds.height;
    return rect;
}

bool isDrawable(const Rect& rect) {
    const auto inRange = [](double value) {
        return std::isfinite(value) && std::abs(value) <= drawingRange;
    };
    return inRange(rect.x) && inRange(rect.y) && inRange(rect.width) && inRange(rect.height) &&
           rect.width > 0 && rect.height > 0;
}

} // namespace paperline
