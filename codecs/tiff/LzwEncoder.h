// LZW as TIFF files store it: codes of 9 to 12 bits, the highest bit first, each width entered one
// code early.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

// Serves one strip after another. Some 75 KB: not for the stack.
class LzwEncoder {
public:
    LzwEncoder();

    // The stream of at least one byte, from the first clear code to the end code; good until the
    // next call. Throws std::bad_alloc only.
    [[nodiscard]] std::span<const uint8_t> encode(std::span<const uint8_t> bytes);

private:
    // Four places for each code: few strings fall on a place that is taken.
    static constexpr unsigned placeBits = 14;
    static constexpr size_t mostCodes = 3836; // between two clear codes

    size_t takeCodes(std::span<const uint8_t> bytes);
    void writeCodes();
    void writeCode(uint32_t code, unsigned width);
    void writeRest();

    std::array<uint32_t, 256> placeOfByte_;
    // A string is its code without the last byte (12 bits), the last byte (8) and its code (12).
    std::array<uint32_t, size_t{1} << placeBits> strings_;
    std::array<uint16_t, mostCodes + 1> codes_;
    size_t codeCount_ = 0;
    std::vector<uint8_t> stream_;
    size_t streamBytes_ = 0;
    uint64_t waitingBits_ = 0; // the oldest highest
    unsigned waitingCount_ = 0;
};

} // namespace paperline
