#include "bench/Likeness.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace paperline::bench {

namespace {

constexpr int passes = 3;
constexpr ptrdiff_t reach = 2; // pixels to each side of the mean's centre

struct Plane {
    ptrdiff_t width = 0, height = 0;
    std::vector<float> values;
};

// Beyond its edges the plane goes on as it is there.
void blurLine(const float* from, float* to, ptrdiff_t count, ptrdiff_t step) {
    for (ptrdiff_t at = 0; at < count; ++at) {
        float sum = 0;
        for (ptrdiff_t near = at - reach; near <= at + reach; ++near)
            sum += from[std::clamp<ptrdiff_t>(near, 0, count - 1) * step];
        to[at * step] = sum / (2 * reach + 1);
    }
}

void blur(Plane& plane) {
    std::vector<float> other(plane.values.size());
    for (int pass = 0; pass < passes; ++pass) {
        for (ptrdiff_t y = 0; y < plane.height; ++y)
            blurLine(plane.values.data() + y * plane.width,
                     other.data() + y * plane.width,
                     plane.width,
                     1);
        for (ptrdiff_t x = 0; x < plane.width; ++x)
            blurLine(other.data() + x, plane.values.data() + x, plane.height, plane.width);
    }
}

// One channel of a minus the same of b.
Plane difference(const BitmapImageRep& a, const BitmapImageRep& b, size_t channel) {
    Plane plane{a.pixelsWide(), a.pixelsHigh(), {}};
    plane.values.reserve(static_cast<size_t>(plane.width) * static_cast<size_t>(plane.height));
    for (int32_t y = 0; y < a.pixelsHigh(); ++y) {
        const auto mine = a.row(y);
        const auto other = b.row(y);
        for (size_t x = 0; x < static_cast<size_t>(plane.width); ++x)
            plane.values.push_back(
                static_cast<float>(mine[3 * x + channel] - other[3 * x + channel]));
    }
    return plane;
}

} // namespace

double blurredPsnr(const BitmapImageRep& a, const BitmapImageRep& b) {
    if (a.pixelsWide() != b.pixelsWide() || a.pixelsHigh() != b.pixelsHigh() ||
        a.bitsPerPixel() != 24 || b.bitsPerPixel() != 24)
        return 0;
    double squares = 0;
    double count = 0;
    for (size_t channel = 0; channel < 3; ++channel) {
        Plane plane = difference(a, b, channel);
        blur(plane); // blurring is linear: the difference of the blurred is the blurred difference
        for (const float value : plane.values)
            squares += static_cast<double>(value) * static_cast<double>(value);
        count += static_cast<double>(plane.values.size());
    }
    return squares > 0 ? std::min(99.0, 10 * std::log10(255.0 * 255.0 * count / squares)) : 99.0;
}

} // namespace paperline::bench
