// Prefix codes by frequency, as deflate wants them: canonical, limited in length, bits reversed.
#pragma once

#include <cstdint>
#include <span>

namespace paperline {

struct HuffmanCode {
    uint16_t bits = 0;   // the first bit of the code lowest
    uint16_t length = 0; // 0: the symbol does not occur
};

// The lowest `count` bits in opposite order.
unsigned reversedBits(unsigned bits, unsigned count);

// Codes for the symbols whose frequency is not 0, none longer than `longest` bits (at most 15,
// 2^longest at least the number of symbols). `codes` has the size of `frequencies`. A symbol that
// is alone gets one bit.
void assignHuffmanCodes(std::span<const uint32_t> frequencies,
                        unsigned longest,
                        std::span<HuffmanCode> codes);

} // namespace paperline
