#include "sources/framework/FixedPoint.h"

#include <algorithm>
#include <cmath>

namespace paperline::sources {

namespace {

constexpr double centimetresPerInch = millimetresPerInch / 10;

} // namespace

twain::abi::Fix32 toFix32(double number) {
    if (std::isnan(number))
        return {0, 0};
    constexpr double lowest = -32768.0 * 65536.0;
    constexpr double highest = 32768.0 * 65536.0 - 1;
    const double scaled = std::clamp(std::floor(number * 65536.0 + 0.5), lowest, highest);
    const auto bits = static_cast<int32_t>(scaled);
    return {static_cast<int16_t>(bits >> 16), static_cast<uint16_t>(bits & 0xffff)};
}

double fromFix32(twain::abi::Fix32 number) {
    return number.Whole + number.Frac / 65536.0;
}

uint32_t fix32Item(double number) {
    const twain::abi::Fix32 fixed = toFix32(number);
    return static_cast<uint32_t>(static_cast<uint16_t>(fixed.Whole)) |
           static_cast<uint32_t>(fixed.Frac) << 16;
}

double fix32FromItem(uint32_t item) {
    return fromFix32({static_cast<int16_t>(item & 0xffff), static_cast<uint16_t>(item >> 16)});
}

double lengthInUnits(double inches, uint16_t units) {
    return units == twain::TWUN_CENTIMETERS ? inches * centimetresPerInch : inches;
}

double inchesFromUnits(double length, uint16_t units) {
    return units == twain::TWUN_CENTIMETERS ? length / centimetresPerInch : length;
}

double resolutionInUnits(double dpi, uint16_t units) {
    return units == twain::TWUN_CENTIMETERS ? dpi / centimetresPerInch : std::floor(dpi + 0.5);
}

double dpiFromUnits(double resolution, uint16_t units) {
    return units == twain::TWUN_CENTIMETERS ? resolution * centimetresPerInch : resolution;
}

} // namespace paperline::sources
