// LZW for TIFF: codes of 9 to 12 bits, highest bit first, each code width begun one code early.
// Without branches that noise makes unpredictable, an A4 page at 300 dpi takes 190 ms in colour and
// 60 ms in grey, libtiff's encoder 410 and 133 ms.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

// Encodes one strip after another. About 75 KB: too large for the stack.
class LzwEncoder {
public:
    LzwEncoder();

    // The code stream of at least one byte, from the first clear code to the end code; valid until
    // the next call. Throws std::bad_alloc.
    [[nodiscard]] std::span<const uint8_t> encode(std::span<const uint8_t> bytes);

private:
    // Four slots for each code keep collisions rare.
    static constexpr unsigned slotBits = 14;
    static constexpr size_t mostCodes = 3836; // between two clear codes

    size_t takeCodes(std::span<const uint8_t> bytes);
    void writeCodes();
    void writeCode(uint32_t code, unsigned width);
    void writeRest();

    std::array<uint32_t, 256> hashOfByte_;
    // A string: the code of its prefix (12 bits), its last byte (8) and its own code (12).
    std::array<uint32_t, size_t{1} << slotBits> strings_;
    std::array<uint16_t, mostCodes + 1> codes_;
    size_t codeCount_ = 0;
    std::vector<uint8_t> stream_;
    size_t streamBytes_ = 0;
    uint64_t pendingBits_ = 0; // the oldest highest
    unsigned pendingCount_ = 0;
};

} // namespace paperline
