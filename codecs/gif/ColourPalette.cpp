#include "codecs/gif/ColourPalette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_set>

namespace paperline {
namespace {

constexpr unsigned bitsPerAxis = 5; // of the histogram
constexpr size_t stepsPerAxis = size_t{1} << bitsPerAxis;
constexpr unsigned droppedBits = 8 - bitsPerAxis;

// Sums of so many samples fit 32 bits.
constexpr int64_t mostSamples = int64_t{1} << 24;

// A cell of the histogram, with the sums of its pixels' samples.
struct Cell {
    uint32_t count = 0;
    std::array<uint32_t, 3> sum{};
    std::array<uint8_t, 3> position{}; // along each axis
};

struct Sums {
    double count = 0;
    std::array<double, 3> sum{};

    void add(const Sums& other) {
        count += other.count;
        for (size_t axis = 0; axis < 3; ++axis)
            sum[axis] += other.sum[axis];
    }
    Sums without(const Sums& other) const {
        Sums rest;
        rest.count = count - other.count;
        for (size_t axis = 0; axis < 3; ++axis)
            rest.sum[axis] = sum[axis] - other.sum[axis];
        return rest;
    }
    // The part of the sum of squares that the mean explains; the rest is the error.
    double explained() const {
        if (count <= 0)
            return 0;
        return (sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]) / count;
    }
};

Sums sumsOf(const Cell& cell) {
    return {static_cast<double>(cell.count),
            {static_cast<double>(cell.sum[0]),
             static_cast<double>(cell.sum[1]),
             static_cast<double>(cell.sum[2])}};
}

// A range of the list of cells and its best cut, after `position` on `axis`.
struct Box {
    size_t begin = 0, end = 0;
    Sums total;
    double gain = 0; // 0: cannot be cut
    size_t axis = 0;
    uint8_t position = 0;
};

using Projection = std::array<Sums, stepsPerAxis>;

void findCutOnAxis(Box& box, size_t axis, const Projection& projection) {
    Sums left;
    for (size_t position = 0; position + 1 < stepsPerAxis; ++position) {
        left.add(projection[position]);
        const Sums right = box.total.without(left);
        if (left.count <= 0 || right.count <= 0)
            continue;
        const double gain = left.explained() + right.explained() - box.total.explained();
        if (gain > box.gain) {
            box.gain = gain;
            box.axis = axis;
            box.position = static_cast<uint8_t>(position);
        }
    }
}

Box makeBox(const std::vector<Cell>& cells, size_t begin, size_t end) {
    Box box{begin, end, {}, 0, 0, 0};
    std::array<Projection, 3> projections{};
    for (size_t at = begin; at < end; ++at) {
        const Sums sums = sumsOf(cells[at]);
        box.total.add(sums);
        for (size_t axis = 0; axis < 3; ++axis)
            projections[axis][cells[at].position[axis]].add(sums);
    }
    for (size_t axis = 0; axis < 3; ++axis)
        findCutOnAxis(box, axis, projections[axis]);
    return box;
}

// Every second pixel of every second row, staggered; fewer rows of a very large page.
std::vector<Cell> countColours(const BitmapImageRep& page) {
    std::vector<Cell> table(stepsPerAxis * stepsPerAxis * stepsPerAxis);
    const auto width = static_cast<size_t>(page.pixelsWide());
    int32_t rowStep = page.pixelsHigh() > 1 ? 2 : 1;
    while (int64_t{page.pixelsWide()} * page.pixelsHigh() / (2 * rowStep) > mostSamples)
        rowStep *= 2;
    for (int32_t y = 0; y < page.pixelsHigh(); y += rowStep) {
        const std::span<const uint8_t> row = page.row(y);
        const size_t first = width > 1 ? static_cast<size_t>(y / rowStep % 2) : 0;
        for (size_t x = first; x < width; x += 2) {
            const uint8_t* pixel = row.data() + 3 * x;
            Cell& cell = table[static_cast<size_t>(pixel[0] >> droppedBits) << (2 * bitsPerAxis) |
                               static_cast<size_t>(pixel[1] >> droppedBits) << bitsPerAxis |
                               static_cast<size_t>(pixel[2] >> droppedBits)];
            ++cell.count;
            for (size_t axis = 0; axis < 3; ++axis)
                cell.sum[axis] += pixel[axis];
        }
    }
    for (size_t at = 0; at < table.size(); ++at)
        table[at].position = {static_cast<uint8_t>(at >> (2 * bitsPerAxis)),
                              static_cast<uint8_t>(at >> bitsPerAxis & (stepsPerAxis - 1)),
                              static_cast<uint8_t>(at & (stepsPerAxis - 1))};
    std::erase_if(table, [](const Cell& cell) { return cell.count == 0; });
    return table;
}

uint8_t meanOf(const Sums& sums, size_t axis) {
    return static_cast<uint8_t>(std::lround(sums.sum[axis] / sums.count));
}

} // namespace

Palette coloursOfPage(const BitmapImageRep& page) {
    Palette palette;
    std::unordered_set<uint32_t> seen;
    uint32_t previous = UINT32_MAX;
    for (int32_t y = 0; y < page.pixelsHigh(); ++y) {
        const std::span<const uint8_t> row = page.row(y);
        for (size_t x = 0; x < static_cast<size_t>(page.pixelsWide()); ++x) {
            const PaletteColour colour{row[3 * x], row[3 * x + 1], row[3 * x + 2]};
            if (colour.key() == previous || !seen.insert(colour.key()).second)
                continue;
            previous = colour.key();
            if (palette.size() == mostPaletteColours)
                return {};
            palette.push_back(colour);
        }
    }
    return palette;
}

Palette choosePalette(const BitmapImageRep& page) {
    std::vector<Cell> cells = countColours(page);
    std::vector<Box> boxes{makeBox(cells, 0, cells.size())};
    while (boxes.size() < mostPaletteColours) {
        const auto best = std::max_element(
            boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.gain < b.gain; });
        if (best->gain <= 0)
            break;
        const Box box = *best;
        const auto first = cells.begin() + static_cast<std::ptrdiff_t>(box.begin);
        const auto last = cells.begin() + static_cast<std::ptrdiff_t>(box.end);
        const auto middle = std::partition(first, last, [&box](const Cell& cell) {
            return cell.position[box.axis] <= box.position;
        });
        const auto cut = static_cast<size_t>(middle - cells.begin());
        *best = makeBox(cells, box.begin, cut);
        boxes.push_back(makeBox(cells, cut, box.end));
    }
    Palette palette;
    for (const Box& box : boxes)
        palette.push_back({meanOf(box.total, 0), meanOf(box.total, 1), meanOf(box.total, 2)});
    return palette;
}

} // namespace paperline
