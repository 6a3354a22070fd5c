#include "sources/software/Landscape.h"

#include <algorithm>
#include <cmath>

namespace paperline::sources {

namespace {

// Thresholds of an 8 x 8 ordered dither, 0 to 63.
constexpr uint8_t dither[8][8] = {{0, 32, 8, 40, 2, 34, 10, 42},
                                  {48, 16, 56, 24, 50, 18, 58, 26},
                                  {12, 44, 4, 36, 14, 46, 6, 38},
                                  {60, 28, 52, 20, 62, 30, 54, 22},
                                  {3, 35, 11, 43, 1, 33, 9, 41},
                                  {51, 19, 59, 27, 49, 17, 57, 25},
                                  {15, 47, 7, 39, 13, 45, 5, 37},
                                  {63, 31, 55, 23, 61, 29, 53, 21}};

// `amount` 0 to 256.
Ink mixed(Ink from, Ink to, int64_t amount) {
    auto channel = [amount](uint8_t a, uint8_t b) {
        return static_cast<uint8_t>(a + (b - a) * amount / 256);
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

int64_t part(int64_t value, int64_t whole) {
    return std::clamp<int64_t>(value * 256 / std::max<int64_t>(whole, 1), 0, 256);
}

} // namespace

Landscape::Landscape(PixelRect area)
    : area_(area), width_(area.right - area.left), height_(area.bottom - area.top),
      inks_(static_cast<size_t>(width_) * static_cast<size_t>(height_)) {
    drawSky();
    drawHills();
}

Ink& Landscape::ink(int32_t x, int32_t y) {
    return inks_[static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)];
}

void Landscape::drawSky() {
    constexpr Ink skyTop{84, 132, 190}, skyLow{238, 218, 188}, sun{248, 244, 214};
    const auto sunX = static_cast<float>(width_) * 0.7F;
    const auto sunY = static_cast<float>(height_) * 0.3F;
    const float reach2 = static_cast<float>(height_) * static_cast<float>(height_) / 9.0F;
    for (int32_t y = 0; y < height_; ++y) {
        const Ink sky = mixed(skyTop, skyLow, part(y, int64_t{height_} * 3 / 5));
        const float dy = static_cast<float>(y) - sunY;
        for (int32_t x = 0; x < width_; ++x) {
            const float dx = static_cast<float>(x) - sunX;
            const float glow = std::max(1.0F - (dx * dx + dy * dy) / reach2, 0.0F);
            ink(x, y) = mixed(sky, sun, static_cast<int32_t>(glow * glow * 256.0F));
        }
    }
}

void Landscape::drawHills() {
    constexpr Ink hillTop{120, 138, 152}, hillLow{164, 172, 168};
    constexpr Ink fieldTop{72, 110, 52}, fieldLow{150, 158, 84};
    for (int32_t x = 0; x < width_; ++x) {
        const double u = static_cast<double>(x) / width_;
        const double farLine = 0.52 - 0.09 * std::sin(u * 5.1 + 0.4) - 0.04 * std::sin(u * 13.0);
        const double nearLine = 0.68 - 0.06 * std::sin(u * 3.3 + 2.2) - 0.015 * std::sin(u * 21.0);
        const auto farRow = static_cast<int32_t>(farLine * height_);
        const auto nearRow = static_cast<int32_t>(nearLine * height_);
        for (int32_t y = farRow; y < nearRow; ++y)
            ink(x, y) = mixed(hillTop, hillLow, part(y - farRow, height_ / 4));
        for (int32_t y = nearRow; y < height_; ++y)
            ink(x, y) = mixed(fieldTop, fieldLow, part(y - nearRow, height_ - nearRow));
    }
}

void Landscape::paint(BandCanvas& canvas, bool blackAndWhite) const {
    const auto [left, top, right, bottom] = canvas.visible(area_);
    for (int32_t y = top; y < bottom; ++y) {
        const Ink* row =
            inks_.data() + static_cast<size_t>(y - area_.top) * static_cast<size_t>(width_);
        for (int32_t x = left; x < right; ++x) {
            Ink shown = row[x - area_.left];
            if (blackAndWhite) {
                const bool white = shown.grey() > dither[y & 7][x & 7] * 4 + 2;
                shown = white ? Ink{248, 248, 248} : Ink{};
            }
            canvas.setPixel(x, y, shown);
        }
    }
}

} // namespace paperline::sources
