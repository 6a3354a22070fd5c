// UTF-16 and its surrogate pairs.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace paperline {

constexpr bool isHighSurrogate(uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool isLowSurrogate(uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}
constexpr uint32_t joinSurrogates(uint32_t high, uint32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Text up to the first invalid character.
struct DecodedText {
    std::string utf8;
    bool whole = true;
};

DecodedText decodeUtf16(std::span<const uint8_t> bytes, bool bigEndian);

} // namespace paperline
