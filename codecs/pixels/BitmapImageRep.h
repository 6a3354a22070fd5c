// A page's pixels: interleaved samples, top row first, rows `bytesPerRow` apart. Polarity of
// lineart (1 bit per pixel): 0 is black.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/PageMemory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace paperline {

// Bytes of an image whose rows are packed to whole bytes; nothing when a number is not positive or
// the product leaves 63 bits.
[[nodiscard]] std::optional<uint64_t>
imageByteCount(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel);

class BitmapImageRep {
public:
    struct Layout {
        int32_t pixelsWide = 0;
        int32_t pixelsHigh = 0;
        int bitsPerSample = 8;
        int samplesPerPixel = 1;
        int bitsPerPixel = 8;
        int64_t bytesPerRow = 0;
    };

    // Owns bytesPerRow x pixelsHigh zeroed bytes and `spareBytes` behind them. Nothing when a
    // number is not positive, a row does not hold its pixels, or the memory cannot be had.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> make(const Layout& layout,
                                                              size_t spareBytes = 0);

    // A page of 1, 8 (grey) or 24 bits (RGB) with rows of the fewest whole bytes.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep>
    makePage(int32_t widthPixels, int32_t heightPixels, int bitsPerPixel);

    int32_t pixelsWide() const { return layout_.pixelsWide; }
    int32_t pixelsHigh() const { return layout_.pixelsHigh; }
    int bitsPerSample() const { return layout_.bitsPerSample; }
    int samplesPerPixel() const { return layout_.samplesPerPixel; }
    int bitsPerPixel() const { return layout_.bitsPerPixel; }
    int64_t bytesPerRow() const { return layout_.bytesPerRow; }

    std::span<uint8_t> bitmapData() { return {data_.get(), byteCount_}; }
    std::span<const uint8_t> bitmapData() const { return {data_.get(), byteCount_}; }
    std::span<const uint8_t> row(int32_t y) const; // empty outside the page
    std::span<uint8_t> row(int32_t y);

    // Gives the pixels away for others; both memories hold at least bitmapData()'s bytes and what
    // the maker asked for behind them. Pointers into them stay good.
    void exchangePixels(PageMemory& memory) { data_.swap(memory); }

    // Size in points; the resolution in dots per inch is pixels x 72 / points. Starts at one point
    // a pixel.
    Size size() const { return size_; }
    void setSize(Size sizePoints) { size_ = sizePoints; }

private:
    BitmapImageRep() = default;

    Layout layout_;
    Size size_;
    size_t byteCount_ = 0;
    PageMemory data_;
};

} // namespace paperline
