// Rows of PNG pages whose IDAT chunks are independent of each other.
#pragma once

#include "codecs/png/PngStream.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace paperline {

// Undoes the row filters of 8-bit grey or RGB pages that are not interlaced.
class PngRowReader {
public:
    struct Layout {
        int32_t widthPixels;
        int32_t heightPixels;
        int samples; // 1: grey, 3: RGB
    };

    PngRowReader(std::unique_ptr<PngStream> stream, const Layout& layout); // the stream is not null

    const Layout& layout() const { return layout_; }

    // The next row from the top, valid until the next call. Empty when the image is damaged.
    std::span<const uint8_t> next();

    // After the last row: whether the stream ends there and its checksum is right. Otherwise the
    // rows are not to be used.
    [[nodiscard]] bool isComplete();

private:
    std::span<const uint8_t> takeFiltered();

    Layout layout_;
    size_t rowBytes_;
    std::unique_ptr<PngStream> stream_;
    std::span<const uint8_t> chunk_; // the rest of the inflated chunk
    std::vector<uint8_t> joined_;    // a row that two chunks share
    std::vector<uint8_t> row_;       // the last row; zeros before the first
    std::vector<uint8_t> above_;
};

// The rows of a large page of our own writer, read twice as fast as by libpng. Null for any other
// file and for more than `maximumPixels`. Borrows the bytes.
std::unique_ptr<PngRowReader> openPngRows(std::span<const uint8_t> bytes, uint64_t maximumPixels);

} // namespace paperline
