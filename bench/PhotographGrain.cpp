#include "bench/PhotographGrain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace paperline::bench {

namespace {

// -1 to 1 at each crossing of a grid.
float crossing(int32_t column, int32_t row, uint32_t layer) {
    uint32_t mixed = static_cast<uint32_t>(column) * 0x8DA6B343U ^
                     static_cast<uint32_t>(row) * 0xD8163841U ^ layer * 0xCB1AB31FU;
    mixed = (mixed ^ (mixed >> 15)) * 0x2C1B3C6DU;
    mixed ^= mixed >> 13;
    return static_cast<float>(mixed & 0xFFFF) / 32767.5F - 1.0F;
}

// Smooth between the crossings.
float clouds(float x, float y, uint32_t layer) {
    const float left = std::floor(x), top = std::floor(y);
    const auto column = static_cast<int32_t>(left), row = static_cast<int32_t>(top);
    const auto ease = [](float part) { return part * part * (3.0F - 2.0F * part); };
    const float across = ease(x - left), down = ease(y - top);
    const float upper =
        std::lerp(crossing(column, row, layer), crossing(column + 1, row, layer), across);
    const float lower =
        std::lerp(crossing(column, row + 1, layer), crossing(column + 1, row + 1, layer), across);
    return std::lerp(upper, lower, down);
}

struct Layer {
    float cellMillimetres, strength;
};
constexpr std::array<Layer, 5> layers{{{14, 26}, {5, 20}, {1.8F, 16}, {0.6F, 12}, {0.2F, 10}}};

} // namespace

void addGrain(BitmapImageRep& page, const PhotographPlace& place, double dpi) {
    const double perMillimetre = dpi / 25.4;
    const auto left = static_cast<int32_t>(place.left * perMillimetre);
    const auto top = static_cast<int32_t>(place.top * perMillimetre);
    const int32_t right =
        std::min(left + static_cast<int32_t>(place.width * perMillimetre), page.pixelsWide());
    const int32_t bottom =
        std::min(top + static_cast<int32_t>(place.height * perMillimetre), page.pixelsHigh());
    const int32_t samples = page.samplesPerPixel();
    for (int32_t y = top; y < bottom; ++y) {
        const std::span<uint8_t> row = page.row(y);
        for (int32_t x = left; x < right; ++x) {
            float lift = 0;
            for (uint32_t layer = 0; layer < layers.size(); ++layer) {
                const float scale =
                    1.0F / (layers[layer].cellMillimetres * static_cast<float>(perMillimetre));
                lift += layers[layer].strength *
                        clouds(static_cast<float>(x) * scale, static_cast<float>(y) * scale, layer);
            }
            for (int32_t sample = 0; sample < samples; ++sample) {
                uint8_t& level = row[static_cast<size_t>(x * samples + sample)];
                level = static_cast<uint8_t>(
                    std::clamp(static_cast<float>(level) + lift, 4.0F, 248.0F));
            }
        }
    }
}

} // namespace paperline::bench
