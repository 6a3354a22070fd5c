// What a picture file says about one of its pages without its pixels.
#pragma once

#include "codecs/pixels/Geometry.h"

#include <cstdint>
#include <optional>

namespace paperline {

// As the file stores them; absent where it is silent.
struct PageProperties {
    std::optional<double> dpiWidth;     // dots per inch, horizontal
    std::optional<double> dpiHeight;    // dots per inch, vertical
    std::optional<int64_t> orientation; // EXIF numbering, 1 to 8 when valid
};

struct PictureHeader {
    PixelSize size;
    PageProperties properties;
};

} // namespace paperline
