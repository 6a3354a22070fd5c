// How a page's pixels reach the page view. Points, the y axis growing upward: the page's lower left
// corner is (0, 0), and so is the view's.
//
//      view bounds                       The page hangs 5 points below the top left corner.
//   +--------------------+
//   | +------+           |  ty = bounds.height - drawn height - 5
//   | | page |           |  tx = 5
//   | +------+           |
//   +--------------------+
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/PageProperties.h"

#include <optional>

namespace paperline {

// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;
    bool operator==(const AffineTransform&) const = default;
};

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

Point transformed(const AffineTransform& transform, Point point);
// The bounding box of the rectangle's four corners after the transform.
Rect boundingBox(const AffineTransform& transform, const Rect& rect);
// For the debug trace: truncated; 0 when out of range.
int32_t wholePoints(double points);
// First the transform, then a uniform scale.
AffineTransform scaledBy(const AffineTransform& transform, double scale);

// Missing and invalid values count as 72.
float resolutionOrDefault(const std::optional<double>& dpi);
// 1 to 8; anything else counts as 1.
int orientationOrDefault(const std::optional<int64_t>& orientation);

// Turns and mirrors the page as its orientation says and stretches the axis with the lower
// resolution. The result's bounding box begins at (0, 0).
AffineTransform
orientationTransform(int orientation, float dpiWidth, float dpiHeight, PixelSize page);

// `oriented` (an orientationTransform) and then the scale that fits the page into the view less 10
// points on every side; without `fit` one pixel stays one point.
AffineTransform
fitTransform(const AffineTransform& oriented, PixelSize page, Size viewSize, bool fit);

// The fit transform moved to where the page is drawn, and the drawn size.
struct PagePlacement {
    AffineTransform transform;
    Size drawnSize;
};
PagePlacement placePage(const AffineTransform& fitted, PixelSize page, const Rect& viewBounds);

// Frame and scrollers of the view that shows the page one pixel a point, in a scroll view's frame.
struct ActualSizeFrame {
    Rect frame;
    bool verticalScroller = false;
    bool horizontalScroller = false;
};
ActualSizeFrame actualSizeFrame(const Rect& scrollViewFrame, PixelSize largestPage);

} // namespace paperline
