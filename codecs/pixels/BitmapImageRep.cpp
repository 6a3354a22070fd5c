#include "codecs/pixels/BitmapImageRep.h"

#include <new>

namespace paperline {

std::optional<uint64_t>
imageByteCount(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel) {
    if (widthPixels <= 0 || heightPixels <= 0 || bitsPerPixel <= 0 || bitsPerPixel > 64)
        return std::nullopt;
    // At most 2^31 x 64 / 8 bytes a row and 2^31 rows: 2^65 in the worst case, so test before
    // multiplying.
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
    const uint64_t packedRow = *packed / static_cast<uint64_t>(layout.pixelsHigh);
    if (layout.bytesPerRow < 0 || static_cast<uint64_t>(layout.bytesPerRow) < packedRow)
        return nullptr;
    if (static_cast<uint64_t>(layout.bytesPerRow) >
        (SIZE_MAX / 2) / static_cast<uint64_t>(layout.pixelsHigh))
        return nullptr;
    const size_t byteCount =
        static_cast<size_t>(layout.bytesPerRow) * static_cast<size_t>(layout.pixelsHigh);
    if (spareBytes > SIZE_MAX / 2 - byteCount)
        return nullptr;

    std::shared_ptr<BitmapImageRep> result(new (std::nothrow) BitmapImageRep);
    if (!result)
        return nullptr;
    result->data_ = allocatePageMemory(byteCount + spareBytes);
    if (!result->data_)
        return nullptr;
    result->layout_ = layout;
    result->byteCount_ = byteCount;
    result->size_ = {static_cast<double>(layout.pixelsWide),
                     static_cast<double>(layout.pixelsHigh)};
    return result;
}

std::shared_ptr<BitmapImageRep>
BitmapImageRep::makePage(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel) {
    if (widthPixels <= 0 || (bitsPerPixel != 1 && bitsPerPixel != 8 && bitsPerPixel != 24))
        return nullptr;
    Layout layout{widthPixels, heightPixels, bitsPerPixel == 1 ? 1 : 8, 1, bitsPerPixel, 0};
    if (bitsPerPixel == 24)
        layout.samplesPerPixel = 3;
    layout.bytesPerRow = (int64_t{widthPixels} * bitsPerPixel + 7) / 8;
    return make(layout);
}

std::span<const uint8_t> BitmapImageRep::row(int32_t y) const {
    if (y < 0 || y >= layout_.pixelsHigh)
        return {};
    const auto stride = static_cast<size_t>(layout_.bytesPerRow);
    return bitmapData().subspan(static_cast<size_t>(y) * stride, stride);
}

std::span<uint8_t> BitmapImageRep::row(int32_t y) {
    if (y < 0 || y >= layout_.pixelsHigh)
        return {};
    const auto stride = static_cast<size_t>(layout_.bytesPerRow);
    return bitmapData().subspan(static_cast<size_t>(y) * stride, stride);
}

} // namespace paperline
