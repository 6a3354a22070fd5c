#include "viewer/Colours.h"

#include <algorithm>
#include <cmath>

namespace paperline {
namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

} // namespace

double relativeLuminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrastRatio(const QColor& first, const QColor& second) {
    const auto [dark, light] = std::minmax({relativeLuminance(first), relativeLuminance(second)});
    return (light + 0.05) / (dark + 0.05);
}

QColor readableBackground(QColor background, const QColor& text) {
    constexpr int step = 4;
    constexpr int steps = 64; // from black to white
    const int direction = relativeLuminance(text) > 0.18 ? -step : step;
    const auto moved = [direction](int channel) { return std::clamp(channel + direction, 0, 255); };
    for (int i = 0; i < steps && contrastRatio(background, text) < readableContrast; ++i)
        background.setRgb(
            moved(background.red()), moved(background.green()), moved(background.blue()));
    return background;
}

} // namespace paperline
