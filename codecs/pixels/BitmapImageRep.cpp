#include "codecs/pixels/BitmapImageRep.h"

#include <algorithm>
#include <new>
#include <utility>

namespace paperline {

std::optional<uint64_t>
imageByteCount(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel) {
    if (widthPixels <= 0 || heightPixels <= 0 || bitsPerPixel <= 0 || bitsPerPixel > 64)
        return std::nullopt;
    const uint64_t rowBytes =
        (static_cast<uint64_t>(widthPixels) * static_cast<uint64_t>(bitsPerPixel) + 7) / 8;
    if (rowBytes > static_cast<uint64_t>(INT64_MAX) / static_cast<uint64_t>(heightPixels))
        return std::nullopt;
    return rowBytes * static_cast<uint64_t>(heightPixels);
}

std::shared_ptr<BitmapImageRep> BitmapImageRep::make(const Layout& layout, size_t spareBytes) {
    const std::optional<uint64_t> packed =
        imageByteCount(layout.pixelsWide, layout.pixelsHigh, layout.bitsPerPixel);
    if (!packed || layout.bitsPerSample <= 0 || layout.samplesPerPixel <= 0)
        return nullptr;
    const auto height = static_cast<uint64_t>(layout.pixelsHigh);
    const auto stride = static_cast<uint64_t>(std::max<int64_t>(layout.bytesPerRow, 0));
    if (stride < *packed / height || stride > (SIZE_MAX / 2) / height ||
        spareBytes > SIZE_MAX / 2 - stride * height)
        return nullptr;

    std::shared_ptr<BitmapImageRep> result(new (std::nothrow) BitmapImageRep);
    if (!result)
        return nullptr;
    result->data_ = allocatePageMemory(stride * height + spareBytes);
    if (!result->data_)
        return nullptr;
    result->layout_ = layout;
    result->byteCount_ = stride * height;
    result->size_ = {static_cast<double>(layout.pixelsWide),
                     static_cast<double>(layout.pixelsHigh)};
    return result;
}

std::shared_ptr<BitmapImageRep>
BitmapImageRep::makePage(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel) {
    if (bitsPerPixel != 1 && bitsPerPixel != 8 && bitsPerPixel != 24)
        return nullptr;
    return make({.pixelsWide = widthPixels,
                 .pixelsHigh = heightPixels,
                 .bitsPerSample = bitsPerPixel == 1 ? 1 : 8,
                 .samplesPerPixel = bitsPerPixel == 24 ? 3 : 1,
                 .bitsPerPixel = bitsPerPixel,
                 .bytesPerRow = (int64_t{widthPixels} * bitsPerPixel + 7) / 8});
}

std::span<const uint8_t> BitmapImageRep::row(int32_t y) const {
    if (y < 0 || y >= layout_.pixelsHigh)
        return {};
    const auto stride = static_cast<size_t>(layout_.bytesPerRow);
    return bitmapData().subspan(static_cast<size_t>(y) * stride, stride);
}

std::span<uint8_t> BitmapImageRep::row(int32_t y) {
    const std::span<const uint8_t> row = std::as_const(*this).row(y);
    return {const_cast<uint8_t*>(row.data()), row.size()};
}

void BitmapImageRep::copyPackedRow(int32_t y, std::span<uint8_t> target) const {
    const std::span<const uint8_t> packed = packedRow(y);
    std::copy(packed.begin(), packed.end(), target.begin());
    const auto bitsOfLastByte =
        static_cast<unsigned>(int64_t{layout_.pixelsWide} * layout_.bitsPerPixel % 8);
    if (bitsOfLastByte != 0)
        target[packed.size() - 1] &= static_cast<uint8_t>(0xFF00U >> bitsOfLastByte);
}

void expandBits(std::span<const uint8_t> bits, std::span<uint8_t> target, uint8_t one) {
    for (size_t x = 0; x < target.size(); ++x)
        target[x] = (bits[x / 8] & (0x80U >> (x % 8))) != 0 ? one : uint8_t{0};
}

bool hasPageLayout(const BitmapImageRep& image) {
    const int bits = image.bitsPerPixel();
    return (bits == 1 || bits == 8 || bits == 24) && image.bitsPerSample() == (bits == 1 ? 1 : 8) &&
           image.samplesPerPixel() == (bits == 24 ? 3 : 1);
}

} // namespace paperline
