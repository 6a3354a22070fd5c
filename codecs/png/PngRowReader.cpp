#include "codecs/png/PngRowReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <png.h>

namespace paperline {
namespace {

// Pixels of three samples are read and written four bytes at a time: one byte after each row must
// be accessible.
struct Rows {
    const uint8_t* filtered; // without the filter's number
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

// A pixel in the low bytes of a vector register: its three samples are computed in parallel.
using Bytes = uint8_t __attribute__((vector_size(16)));
using Words = uint32_t __attribute__((vector_size(16)));

Bytes bytesAt(const uint8_t* pixel) {
    uint32_t word = 0;
    std::memcpy(&word, pixel, sizeof word);
    return reinterpret_cast<Bytes>(Words{word});
}

void undoColourAverage(const Rows& rows) {
    Bytes left{};
    for (size_t x = 0; x < rows.bytes; x += 3) {
        const Bytes above = bytesAt(rows.above + x);
        // The mean, rounded down: the common bits and half of the others.
        left = ((left ^ above) >> 1) + ((left & above) + bytesAt(rows.filtered + x));
        const uint32_t word = reinterpret_cast<Words>(left)[0];
        std::memcpy(rows.row + x, &word, sizeof word);
    }
}

// The neighbour nearest to left + above - corner; of equals the left one, then the one above.
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

Numbers numbersAt(const uint8_t* pixel) {
    FourBytes four;
    std::memcpy(&four, pixel, sizeof four);
    return __builtin_convertvector(four, Numbers);
}

Numbers magnitudes(Numbers numbers) {
    const Numbers negative = numbers >> 15;
    return (numbers ^ negative) - negative;
}

// Without branches: noise makes the nearest neighbour unpredictable.
void undoColourPaeth(const Rows& rows) {
    Numbers left{};
    Numbers corner{};
    for (size_t x = 0; x < rows.bytes; x += 3) {
        const Numbers above = numbersAt(rows.above + x);
        const Numbers fromCorner = above - corner;
        const Numbers toLeft = magnitudes(fromCorner);
        const Numbers toAbove = magnitudes(left - corner);
        const Numbers toCorner = magnitudes(left - corner + fromCorner);
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

// False for an unknown filter.
bool undoFilter(uint8_t filter, bool isColour, const Rows& rows) {
    switch (filter) {
    case PNG_FILTER_VALUE_NONE:
        std::copy_n(rows.filtered, rows.bytes, rows.row);
        return true;
    case PNG_FILTER_VALUE_SUB:
        undoSub(isColour ? 3 : 1, rows);
        return true;
    case PNG_FILTER_VALUE_UP:
        undoUp(rows);
        return true;
    case PNG_FILTER_VALUE_AVG:
        if (isColour)
            undoColourAverage(rows);
        else
            undoGreyAverage(rows);
        return true;
    case PNG_FILTER_VALUE_PAETH:
        if (isColour)
            undoColourPaeth(rows);
        else
            undoGreyPaeth(rows);
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

// The filter's number and the row, followed by an accessible byte; empty when the stream ends.
std::span<const uint8_t> PngRowReader::takeFiltered() {
    const size_t wanted = 1 + rowBytes_;
    if (chunk_.empty())
        chunk_ = stream_->next();
    if (chunk_.size() >= wanted)
        return std::exchange(chunk_, chunk_.subspan(wanted)).first(wanted);
    joined_.clear();
    for (; !chunk_.empty(); chunk_ = stream_->next()) {
        const size_t count = std::min(chunk_.size(), wanted - joined_.size());
        joined_.insert(
            joined_.end(), chunk_.begin(), chunk_.begin() + static_cast<ptrdiff_t>(count));
        chunk_ = chunk_.subspan(count);
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

bool PngRowReader::isComplete() {
    return chunk_.empty() && stream_->next().empty() && stream_->isComplete();
}

} // namespace paperline
