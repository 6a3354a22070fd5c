#include "codecs/png/PngRowReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace paperline {
namespace {

// The standard's numbers.
enum RowFilter : uint8_t { none, sub, up, average, paeth };

// Pixels of three samples are read and written four bytes at a time: behind each of these rows
// stands a byte that counts for nothing.
struct Rows {
    const uint8_t* filtered; // without its filter's number
    const uint8_t* above;
    uint8_t* row;
    size_t bytes;
};

void undoSub(size_t samples, const Rows& rows) {
    std::copy_n(rows.filtered, samples, rows.row);
    for (size_t x = samples; x < rows.bytes; ++x)
        rows.row[x] = static_cast<uint8_t>(rows.filtered[x] + rows.row[x - samples]);
}

void undoUp(const Rows& rows) {
    for (size_t x = 0; x < rows.bytes; ++x)
        rows.row[x] = static_cast<uint8_t>(rows.filtered[x] + rows.above[x]);
}

void undoGreyAverage(const Rows& rows) {
    unsigned left = 0;
    for (size_t x = 0; x < rows.bytes; ++x) {
        left = (rows.filtered[x] + (left + rows.above[x]) / 2) & 0xFFU;
        rows.row[x] = static_cast<uint8_t>(left);
    }
}

// A pixel's bytes at the front of a wide register: each sample has a chain of sums of its own, and
// the three go side by side.
using Bytes = uint8_t __attribute__((vector_size(16)));
using Words = uint32_t __attribute__((vector_size(16)));

Bytes bytesAt(const uint8_t* place) {
    uint32_t word = 0;
    std::memcpy(&word, place, sizeof word);
    return reinterpret_cast<Bytes>(Words{word});
}

void undoColourAverage(const Rows& rows) {
    Bytes left{};
    for (size_t x = 0; x < rows.bytes; x += 3) {
        const Bytes above = bytesAt(rows.above + x);
        // The mean, rounded down: what both have, and half of what one of them has.
        left = ((left ^ above) >> 1) + ((left & above) + bytesAt(rows.filtered + x));
        const uint32_t word = reinterpret_cast<Words>(left)[0];
        std::memcpy(rows.row + x, &word, sizeof word);
    }
}

// The neighbour nearest to left + above - corner; left before above before corner.
int paethPrediction(int left, int above, int corner) {
    const int toLeft = std::abs(above - corner);
    const int toAbove = std::abs(left - corner);
    const int toCorner = std::abs(left + above - 2 * corner);
    const int other = toAbove <= toCorner ? above : corner;
    return toLeft <= std::min(toAbove, toCorner) ? left : other;
}

void undoGreyPaeth(const Rows& rows) {
    int left = 0;
    int corner = 0;
    for (size_t x = 0; x < rows.bytes; ++x) {
        const int above = rows.above[x];
        left = (rows.filtered[x] + paethPrediction(left, above, corner)) & 0xFF;
        corner = above;
        rows.row[x] = static_cast<uint8_t>(left);
    }
}

using Numbers = int16_t __attribute__((vector_size(8)));
using FourBytes = uint8_t __attribute__((vector_size(4)));

Numbers numbersAt(const uint8_t* place) {
    FourBytes four;
    std::memcpy(&four, place, sizeof four);
    return __builtin_convertvector(four, Numbers);
}

Numbers sizesOf(Numbers numbers) {
    const Numbers negative = numbers >> 15;
    return (numbers ^ negative) - negative;
}

// Without a branch: noise makes every guess at the nearest neighbour wrong half of the time.
void undoColourPaeth(const Rows& rows) {
    Numbers left{};
    Numbers corner{};
    for (size_t x = 0; x < rows.bytes; x += 3) {
        const Numbers above = numbersAt(rows.above + x);
        const Numbers fromCorner = above - corner;
        const Numbers toLeft = sizesOf(fromCorner);
        const Numbers toAbove = sizesOf(left - corner);
        const Numbers toCorner = sizesOf(left - corner + fromCorner);
        const Numbers isAboveFar = toAbove > toCorner;
        const Numbers isLeftFar = (toLeft > toAbove) | (toLeft > toCorner);
        const Numbers other = above ^ ((above ^ corner) & isAboveFar);
        const Numbers prediction = left ^ ((left ^ other) & isLeftFar);
        left = (numbersAt(rows.filtered + x) + prediction) & 0xFF;
        corner = above;
        const FourBytes four = __builtin_convertvector(left, FourBytes);
        std::memcpy(rows.row + x, &four, sizeof four);
    }
}

// False when there is no such filter.
bool undoFilter(uint8_t filter, bool isColour, const Rows& rows) {
    switch (filter) {
    case none:
        std::copy_n(rows.filtered, rows.bytes, rows.row);
        return true;
    case sub:
        undoSub(isColour ? 3 : 1, rows);
        return true;
    case up:
        undoUp(rows);
        return true;
    case average:
        isColour ? undoColourAverage(rows) : undoGreyAverage(rows);
        return true;
    case paeth:
        isColour ? undoColourPaeth(rows) : undoGreyPaeth(rows);
        return true;
    default:
        return false;
    }
}

} // namespace

PngRowReader::PngRowReader(std::unique_ptr<PngStream> stream, const Layout& layout)
    : layout_(layout),
      rowBytes_(static_cast<size_t>(layout.widthPixels) * static_cast<size_t>(layout.samples)),
      stream_(std::move(stream)), row_(rowBytes_ + 1), above_(rowBytes_ + 1) {}

// The filter's number, the row, and a byte of any value behind it; empty when the stream ends.
std::span<const uint8_t> PngRowReader::takeFiltered() {
    const size_t wanted = 1 + rowBytes_;
    if (now_.empty())
        now_ = stream_->next();
    if (now_.size() >= wanted)
        return std::exchange(now_, now_.subspan(wanted)).first(wanted);
    joined_.clear();
    for (; !now_.empty(); now_ = stream_->next()) {
        const size_t count = std::min(now_.size(), wanted - joined_.size());
        joined_.insert(joined_.end(), now_.begin(), now_.begin() + static_cast<ptrdiff_t>(count));
        now_ = now_.subspan(count);
        if (joined_.size() == wanted) {
            joined_.push_back(0);
            return std::span(joined_).first(wanted);
        }
    }
    return {};
}

std::span<const uint8_t> PngRowReader::next() {
    const std::span<const uint8_t> filtered = takeFiltered();
    if (filtered.empty())
        return {};
    std::swap(row_, above_);
    const Rows rows{filtered.data() + 1, above_.data(), row_.data(), rowBytes_};
    return undoFilter(filtered[0], layout_.samples == 3, rows) ? std::span(row_).first(rowBytes_)
                                                               : std::span<const uint8_t>();
}

bool PngRowReader::isThrough() {
    return now_.empty() && stream_->next().empty() && stream_->isThrough();
}

} // namespace paperline
