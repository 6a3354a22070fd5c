// A page's rows as palette indices, one after the other.
#pragma once

#include "codecs/gif/ColourPalette.h"
#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <memory>
#include <span>

namespace paperline {

class GifRows {
public:
    GifRows() = default;
    virtual ~GifRows() = default;
    GifRows(const GifRows&) = delete;
    GifRows& operator=(const GifRows&) = delete;

    virtual const Palette& palette() const = 0;
    // To be called for each row once, from the top. Valid until the next call; the caller may
    // overwrite it.
    virtual std::span<uint8_t> row(int32_t y) = 0;
};

// For a 1, 8 or 24-bit page, which must outlive the rows. Throws std::bad_alloc.
std::unique_ptr<GifRows> makeGifRows(const BitmapImageRep& page);

} // namespace paperline
