// Rows of a PNG page whose chunks stand for themselves.
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

    PngRowReader(std::unique_ptr<PngStream> stream, const Layout& layout); // a stream, not null

    const Layout& layout() const { return layout_; }

    // The next row from the top, good until the next call. Empty when the picture is damaged.
    std::span<const uint8_t> next();

    // Whether the stream holds the rows that were read, no byte more, and is sound. Nothing that
    // was read counts otherwise.
    [[nodiscard]] bool isThrough();

private:
    std::span<const uint8_t> takeFiltered();

    Layout layout_;
    size_t rowBytes_;
    std::unique_ptr<PngStream> stream_;
    std::span<const uint8_t> now_; // what is left of the chunk that is being read
    std::vector<uint8_t> joined_;  // a row that two chunks share
    std::vector<uint8_t> row_;     // the last row; zeros before the first
    std::vector<uint8_t> above_;
};

// The rows of a large page as our own writer makes it. Null for any other file, and one of more
// than `maximumPixels`. Borrows the bytes.
std::unique_ptr<PngRowReader> openPngRows(std::span<const uint8_t> bytes, uint64_t maximumPixels);

} // namespace paperline
