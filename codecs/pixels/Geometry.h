// Sizes and rectangles, in points unless a name says otherwise; y grows upward.
#pragma once

#include <cstdint>

namespace paperline {

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
};

struct PixelSize {
    uint32_t width = 0;
    uint32_t height = 0;
    bool operator==(const PixelSize&) const = default;
};

// Whether the size is not empty and at most `maximumPixels`.
inline bool isWithin(PixelSize size, uint64_t maximumPixels) {
    return size.width > 0 && size.height > 0 && size.height <= maximumPixels / size.width;
}

} // namespace paperline
