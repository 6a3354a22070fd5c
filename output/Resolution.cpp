#include "output/Resolution.h"

#include <cmath>

namespace paperline {

namespace {

constexpr double pointsPerInch = 72.0;
constexpr int32_t fallbackDpi = 72;

double pointsOfSide(double pixels, int32_t resolutionDpi) {
    const double points = pixels * pointsPerInch / resolutionDpi;
    return static_cast<double>(std::ceil(static_cast<float>(points)));
}

} // namespace

float resolutionOfFixedPoint(int16_t whole, uint16_t fraction) {
    return static_cast<float>(whole + (fraction != 0 ? 1.0 / fraction : 0.0));
}

int32_t wholeDpi(float resolutionDpi) {
    if (!(resolutionDpi >= 1.0F))
        return fallbackDpi;
    // 2^31 is the smallest float that an int32_t does not hold.
    return resolutionDpi < 2147483648.0F ? static_cast<int32_t>(resolutionDpi) : INT32_MAX;
}

Size pointsOfPage(int32_t pixelsWide, int32_t pixelsHigh, int32_t resolutionDpi) {
    return pointsOfPage(Size{static_cast<double>(pixelsWide), static_cast<double>(pixelsHigh)},
                        resolutionDpi);
}

Size pointsOfPage(Size pixels, int32_t resolutionDpi) {
    const int32_t dpi = resolutionDpi < 1 ? fallbackDpi : resolutionDpi;
    return {pointsOfSide(pixels.width, dpi), pointsOfSide(pixels.height, dpi)};
}

Density densityOfPage(int32_t pixelsWide, int32_t pixelsHigh, Size sizePoints) {
    Density density;
    if (sizePoints.width > 0)
        density.horizontalDpi = pixelsWide * pointsPerInch / sizePoints.width;
    if (sizePoints.height > 0)
        density.verticalDpi = pixelsHigh * pointsPerInch / sizePoints.height;
    return density;
}

} // namespace paperline
