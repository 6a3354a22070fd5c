// Huffman codes for deflate: canonical, limited in length, bits reversed.
#pragma once

#include <cstdint>
#include <span>

namespace paperline {

struct HuffmanCode {
    uint16_t bits = 0;   // the code's first bit is the lowest
    uint16_t length = 0; // 0: the symbol does not occur
};

// The lowest `count` bits in reverse order.
unsigned reversedBits(unsigned bits, unsigned count);

// Codes for the symbols whose frequency is not 0, of at most `longest` bits (up to 15, and
// 2^longest at least the number of symbols). A single symbol gets one bit. `codes` and
// `frequencies` have the same size.
void assignHuffmanCodes(std::span<const uint32_t> frequencies,
                        unsigned longest,
                        std::span<HuffmanCode> codes);

} // namespace paperline
