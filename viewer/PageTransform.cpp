#include "viewer/PageTransform.h"

#include <algorithm>
#include <cmath>

namespace paperline {

namespace {

constexpr float defaultDpi = 72.0F;
constexpr double fitInset = 10;
constexpr double pageMargin = 5;
constexpr double heightBesidesPage = 10;
constexpr double widthBesidesPage = 15;

Rect pageRect(PixelSize page) {
    return {0, 0, static_cast<double>(page.width), static_cast<double>(page.height)};
}

} // namespace

Point transformed(const AffineTransform& transform, Point point) {
    return {transform.a * point.x + transform.c * point.y + transform.tx,
            transform.b * point.x + transform.d * point.y + transform.ty};
}

Rect boundingBox(const AffineTransform& transform, const Rect& rect) {
    const double right = rect.x + rect.width;
    const double top = rect.y + rect.height;
    const Point first = transformed(transform, {rect.x, rect.y});
    double left = first.x, bottom = first.y, farRight = first.x, farTop = first.y;
    for (const Point corner : {Point{right, rect.y}, Point{rect.x, top}, Point{right, top}}) {
        const Point moved = transformed(transform, corner);
        left = std::min(left, moved.x);
        farRight = std::max(farRight, moved.x);
        bottom = std::min(bottom, moved.y);
        farTop = std::max(farTop, moved.y);
    }
    return {left, bottom, farRight - left, farTop - bottom};
}

int32_t wholePoints(double points) {
    return std::abs(points) < 2e9 ? static_cast<int32_t>(points) : 0;
}

AffineTransform scaledBy(const AffineTransform& transform, double scale) {
    return {transform.a * scale,
            transform.b * scale,
            transform.c * scale,
            transform.d * scale,
            transform.tx * scale,
            transform.ty * scale};
}

float resolutionOrDefault(const std::optional<double>& dpi) {
    if (!dpi || !std::isfinite(*dpi) || *dpi <= 0)
        return defaultDpi;
    const auto narrowed = static_cast<float>(*dpi);
    return std::isfinite(narrowed) && narrowed > 0 ? narrowed : defaultDpi;
}

int orientationOrDefault(const std::optional<int64_t>& orientation) {
    return orientation && *orientation >= 1 && *orientation <= 8 ? static_cast<int>(*orientation)
                                                                 : 1;
}

AffineTransform
orientationTransform(int orientation, float dpiWidth, float dpiHeight, PixelSize page) {
    const float stretchX = dpiHeight > dpiWidth ? dpiHeight / dpiWidth : 1.0F;
    const float stretchY = dpiWidth > dpiHeight ? dpiWidth / dpiHeight : 1.0F;
    const double X = static_cast<double>(stretchX);
    const double Y = static_cast<double>(stretchY);
    const double W = static_cast<double>(stretchX * static_cast<float>(page.width));
    const double H = static_cast<double>(stretchY * static_cast<float>(page.height));
    switch (orientation) {
    case 2:
        return {-X, 0, 0, Y, W, 0};
    case 3:
        return {-X, 0, 0, -Y, W, H};
    case 4:
        return {X, 0, 0, -Y, 0, H};
    case 5:
        return {0, -X, -Y, 0, H, W};
    case 6:
        return {0, -X, Y, 0, 0, W};
    case 7:
        return {0, X, Y, 0, 0, 0};
    case 8:
        return {0, X, -Y, 0, H, 0};
    default:
        return {X, 0, 0, Y, 0, 0};
    }
}

AffineTransform
fitTransform(const AffineTransform& oriented, PixelSize page, Size viewSize, bool fit) {
    if (!fit)
        return oriented;
    const Rect box = boundingBox(oriented, pageRect(page));
    if (box.width <= 0 || box.height <= 0)
        return oriented;
    // Not negative: that would mirror the page.
    const double availableWidth = std::max(0.0, viewSize.width - 2 * fitInset);
    const double availableHeight = std::max(0.0, viewSize.height - 2 * fitInset);
    const auto scale =
        static_cast<float>(std::min(availableWidth / box.width, availableHeight / box.height));
    return scaledBy(oriented, static_cast<double>(scale));
}

PagePlacement placePage(const AffineTransform& fitted, PixelSize page, const Rect& viewBounds) {
    const Rect box = boundingBox(fitted, pageRect(page));
    PagePlacement placement{fitted, {box.width, box.height}};
    placement.transform.tx += viewBounds.x + pageMargin;
    placement.transform.ty += viewBounds.y + (viewBounds.height - box.height) - pageMargin;
    return placement;
}

ActualSizeFrame actualSizeFrame(const Rect& scrollViewFrame, PixelSize largestPage) {
    ActualSizeFrame result{scrollViewFrame, false, false};
    const auto pageWidth = static_cast<double>(largestPage.width);
    const auto pageHeight = static_cast<double>(largestPage.height);
    if (scrollViewFrame.height < pageHeight) {
        result.frame.height = pageHeight + heightBesidesPage;
        result.verticalScroller = true;
    }
    if (scrollViewFrame.width < pageWidth) {
        result.frame.width = pageWidth + widthBesidesPage;
        result.horizontalScroller = true;
    }
    return result;
}

} // namespace paperline
