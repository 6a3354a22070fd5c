#include "codecs/png/PngRows.h"

#include <algorithm>
#include <cstdlib>

#include <png.h>

namespace paperline {
namespace {

struct Neighbours {
    const uint8_t* row;
    const uint8_t* above;
    size_t rowBytes;
    size_t pixelBytes; // 1 to rowBytes
};

// The loops below have no branches, so that compilers vectorise them. 16 bits hold every
// intermediate value.

void averageDifferences(const Neighbours& here, uint8_t* target) {
    for (size_t x = 0; x < here.pixelBytes; ++x)
        target[x] = static_cast<uint8_t>(here.row[x] - here.above[x] / 2);
    const uint8_t* left = here.row;
    for (size_t x = here.pixelBytes; x < here.rowBytes; ++x) {
        const auto average = static_cast<uint8_t>((left[x - here.pixelBytes] + here.above[x]) / 2);
        target[x] = static_cast<uint8_t>(here.row[x] - average);
    }
}

int16_t distance(int16_t from, int16_t to) {
    const auto difference = static_cast<int16_t>(from - to);
    return difference < 0 ? static_cast<int16_t>(-difference) : difference;
}

// The neighbour nearest to left + above - corner; of equals the left one, then the one above.
uint8_t paethPrediction(int16_t left, int16_t above, int16_t corner) {
    const int16_t toLeft = distance(above, corner);
    const int16_t toAbove = distance(left, corner);
    const int16_t toCorner =
        distance(static_cast<int16_t>(left + above), static_cast<int16_t>(2 * corner));
    const int16_t nearer = toAbove < toLeft ? above : left;
    const int16_t nearest = toAbove < toLeft ? toAbove : toLeft;
    return static_cast<uint8_t>(toCorner < nearest ? corner : nearer);
}

void paethDifferences(const Neighbours& here, uint8_t* target) {
    for (size_t x = 0; x < here.pixelBytes; ++x)
        target[x] = static_cast<uint8_t>(here.row[x] - here.above[x]);
    const uint8_t* left = here.row;
    const uint8_t* corner = here.above;
    for (size_t x = here.pixelBytes; x < here.rowBytes; ++x) {
        const uint8_t prediction =
            paethPrediction(left[x - here.pixelBytes], here.above[x], corner[x - here.pixelBytes]);
        target[x] = static_cast<uint8_t>(here.row[x] - prediction);
    }
}

// Sum of the magnitudes of signed differences: an estimate of the bits they take.
uint64_t sumOfMagnitudes(const uint8_t* differences, size_t count) {
    uint64_t sum = 0;
    constexpr size_t piece = 65536; // 32 bits hold its sum
    for (size_t start = 0; start < count; start += piece) {
        const size_t end = std::min(count, start + piece);
        uint32_t part = 0;
        for (size_t x = start; x < end; ++x) {
            const auto difference = static_cast<int8_t>(differences[x]);
            part += static_cast<uint32_t>(std::abs(difference));
        }
        sum += part;
    }
    return sum;
}

} // namespace

PngRowFilter::PngRowFilter(size_t rowBytes, size_t pixelBytes)
    : rowBytes_(rowBytes), pixelBytes_(pixelBytes), noRow_(rowBytes), average_(rowBytes) {}

void PngRowFilter::filter(std::span<const uint8_t> row,
                          std::span<const uint8_t> above,
                          uint8_t* target) {
    const Neighbours here{
        row.data(), above.empty() ? noRow_.data() : above.data(), rowBytes_, pixelBytes_};
    averageDifferences(here, average_.data());
    paethDifferences(here, target + 1);
    target[0] = PNG_FILTER_VALUE_PAETH;
    if (sumOfMagnitudes(average_.data(), rowBytes_) < sumOfMagnitudes(target + 1, rowBytes_)) {
        target[0] = PNG_FILTER_VALUE_AVG;
        std::copy(average_.begin(), average_.end(), target + 1);
    }
}

} // namespace paperline
