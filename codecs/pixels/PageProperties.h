// What a picture file says about one of its pages without its pixels.
#pragma once

#include <cstdint>
#include <optional>

namespace paperline {

struct PixelSize {
    uint32_t width = 0;
    uint32_t height = 0;
    bool operator==(const PixelSize&) const = default;
};

// Values as the file stores them; nothing where the file is silent.
struct PageProperties {
    std::optional<double> dpiWidth;     // dots per inch, horizontal
    std::optional<double> dpiHeight;    // dots per inch, vertical
    std::optional<int64_t> orientation; // EXIF numbering, 1 to 8 when sensible
};

struct PictureHeader {
    PixelSize size;
    PageProperties properties;
};

} // namespace paperline
