#include "output/ImageScaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <vector>

namespace paperline {

namespace {

constexpr double largestSidePoints = 1 << 20;
using Sums = std::array<double, 4>; // red, green, blue, covered area

// The source pixels that one target pixel covers along an axis, with the share of the target pixel
// each of them takes.
struct Coverage {
    int32_t first = 0;
    std::vector<double> shares;
};

Coverage coverageOf(int32_t targetPixel, double placeStart, double placeLength, int32_t pixels) {
    const double perPoint = pixels / placeLength;
    const double start =
        std::clamp((targetPixel - placeStart) * perPoint, 0.0, static_cast<double>(pixels));
    const double end =
        std::clamp((targetPixel + 1 - placeStart) * perPoint, 0.0, static_cast<double>(pixels));
    Coverage coverage;
    coverage.first = static_cast<int32_t>(start);
    for (int32_t pixel = coverage.first; pixel < pixels && pixel < end; ++pixel) {
        const double length = std::min(end, pixel + 1.0) - std::max(start, double{1} * pixel);
        coverage.shares.push_back(length / perPoint);
    }
    return coverage;
}

std::vector<Coverage>
coverages(int32_t targetPixels, double placeStart, double placeLength, int32_t pixels) {
    std::vector<Coverage> result;
    result.reserve(static_cast<size_t>(targetPixels));
    for (int32_t i = 0; i < targetPixels; ++i)
        result.push_back(coverageOf(i, placeStart, placeLength, pixels));
    return result;
}

void addPixel(Sums& sums, std::span<const uint8_t> row, int bitsPerPixel, size_t x, double share) {
    if (bitsPerPixel == 1 || bitsPerPixel == 8) {
        const double level = bitsPerPixel == 8                        ? row[x]
                             : ((row[x / 8] >> (7 - x % 8)) & 1) != 0 ? 255
                                                                      : 0;
        for (size_t channel = 0; channel < 3; ++channel)
            sums[channel] += level * share;
        sums[3] += share;
        return;
    }
    const size_t bytes = static_cast<size_t>(bitsPerPixel) / 8;
    const double covered = bytes == 4 ? share * row[4 * x + 3] / 255.0 : share;
    for (size_t channel = 0; channel < 3; ++channel)
        sums[channel] += row[bytes * x + channel] * covered;
    sums[3] += covered;
}

void storePixel(uint8_t* target, const Sums& sums) {
    if (sums[3] <= 0)
        return;
    for (size_t channel = 0; channel < 3; ++channel)
        target[channel] =
            static_cast<uint8_t>(std::lround(std::clamp(sums[channel] / sums[3], 0.0, 255.0)));
    target[3] = static_cast<uint8_t>(std::lround(std::clamp(sums[3], 0.0, 1.0) * 255));
}

bool hasKnownLayout(const BitmapImageRep& page) {
    const int bits = page.bitsPerPixel();
    return bits == 1 || bits == 8 || bits == 24 || bits == 32;
}

std::shared_ptr<BitmapImageRep> makeTarget(Size targetPoints) {
    if (!(targetPoints.width >= 1 && targetPoints.height >= 1) ||
        targetPoints.width > largestSidePoints || targetPoints.height > largestSidePoints)
        return nullptr;
    const auto wide = static_cast<int32_t>(std::ceil(targetPoints.width));
    const auto high = static_cast<int32_t>(std::ceil(targetPoints.height));
    return BitmapImageRep::make({.pixelsWide = wide,
                                 .pixelsHigh = high,
                                 .bitsPerSample = 8,
                                 .samplesPerPixel = 4,
                                 .bitsPerPixel = 32,
                                 .bytesPerRow = int64_t{4} * wide});
}

void addRow(std::vector<Sums>& sums,
            const BitmapImageRep& page,
            int32_t y,
            const std::vector<Coverage>& columns,
            double rowShare) {
    const std::span<const uint8_t> row = page.row(y);
    for (size_t target = 0; target < columns.size(); ++target) {
        auto x = static_cast<size_t>(columns[target].first);
        for (const double share : columns[target].shares)
            addPixel(sums[target], row, page.bitsPerPixel(), x++, share * rowShare);
    }
}

} // namespace

Rect placeProportionally(Size sourcePoints, Size targetPoints) {
    if (sourcePoints == targetPoints)
        return {0, 0, sourcePoints.width, sourcePoints.height};
    const auto sourceWidth = static_cast<float>(sourcePoints.width);
    const auto sourceHeight = static_cast<float>(sourcePoints.height);
    const auto targetWidth = static_cast<float>(targetPoints.width);
    const auto targetHeight = static_cast<float>(targetPoints.height);
    const float widthFactor = targetWidth / sourceWidth;
    const float heightFactor = targetHeight / sourceHeight;
    const float scale = std::min(widthFactor, heightFactor);
    const float width = sourceWidth * scale;
    const float height = sourceHeight * scale;
    const float x = widthFactor > heightFactor ? (targetWidth - width) * 0.5F : 0;
    const float y = heightFactor > widthFactor ? (targetHeight - height) * 0.5F : 0;
    return {double{x}, double{y}, double{width}, double{height}};
}

std::shared_ptr<BitmapImageRep>
drawScaled(const BitmapImageRep& page, Size targetPoints, const Rect& place) {
    if (!hasKnownLayout(page) || !(place.width > 0 && place.height > 0))
        return nullptr;
    std::shared_ptr<BitmapImageRep> target = makeTarget(targetPoints);
    if (!target)
        return nullptr;
    const std::vector<Coverage> columns =
        coverages(target->pixelsWide(), place.x, place.width, page.pixelsWide());
    const std::vector<Coverage> rows =
        coverages(target->pixelsHigh(), place.y, place.height, page.pixelsHigh());
    std::vector<Sums> sums(columns.size());
    uint8_t* pixel = target->bitmapData().data();
    for (const Coverage& covered : rows) {
        std::fill(sums.begin(), sums.end(), Sums{});
        int32_t y = covered.first;
        for (const double share : covered.shares)
            addRow(sums, page, y++, columns, share);
        for (const Sums& sum : sums) {
            storePixel(pixel, sum);
            pixel += 4;
        }
    }
    return target;
}

} // namespace paperline
