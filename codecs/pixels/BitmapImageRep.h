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
// the product needs more than 63 bits.
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

    // Allocates bytesPerRow x pixelsHigh zeroed bytes, followed by `spareBytes`. Null when a number
    // is not positive, a row does not hold its pixels, or memory runs out.
    [[nodiscard]] static std::shared_ptr<BitmapImageRep> make(const Layout& layout,
                                                              size_t spareBytes = 0);

    // A page of 1, 8 (grey) or 24 bits (RGB) a pixel with packed rows.
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
    std::span<const uint8_t> row(int32_t y) const; // empty outside the image
    std::span<uint8_t> row(int32_t y);

    // A row of the image without its padding.
    size_t packedRowBytes() const {
        return static_cast<size_t>((int64_t{pixelsWide()} * bitsPerPixel() + 7) / 8);
    }
    std::span<const uint8_t> packedRow(int32_t y) const { return row(y).first(packedRowBytes()); }
    // The same copied, with the bits after the last pixel set to 0.
    void copyPackedRow(int32_t y, std::span<uint8_t> target) const;

    // Exchanges the pixel memory with `memory`, which is at least as large, spare bytes included.
    // Pointers into both stay valid.
    void swapPixels(PageMemory& memory) { data_.swap(memory); }

    // In points; dots per inch are pixels x 72 / points. Initially one point a pixel.
    Size size() const { return size_; }
    void setSize(Size sizePoints) { size_ = sizePoints; }

private:
    BitmapImageRep() = default;

    Layout layout_;
    Size size_;
    size_t byteCount_ = 0;
    PageMemory data_;
};

// One byte for each bit, highest bit first: 0 or `one`.
void expandBits(std::span<const uint8_t> bits, std::span<uint8_t> target, uint8_t one);

// Whether an image can be a page: one sample of 1 or 8 bits a pixel, or three of 8.
[[nodiscard]] bool hasPageLayout(const BitmapImageRep& image);

} // namespace paperline
