#include "codecs/png/HuffmanCode.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <vector>

namespace paperline {
namespace {

std::vector<HuffmanCode> codesFor(const std::vector<uint32_t>& frequencies, unsigned longest) {
    std::vector<HuffmanCode> codes(frequencies.size());
    assignHuffmanCodes(frequencies, longest, codes);
    return codes;
}

std::vector<unsigned> lengthsOf(const std::vector<HuffmanCode>& codes) {
    std::vector<unsigned> lengths;
    for (const HuffmanCode& code : codes)
        lengths.push_back(code.length);
    return lengths;
}

TEST(HuffmanCode, RareSymbolsGetLongCodes) {
    const auto codes = codesFor({1, 0, 8, 4, 1}, 12);
    EXPECT_EQ(lengthsOf(codes), (std::vector<unsigned>{3, 0, 1, 2, 3}));
    // Canonical: 0 for the third, 10 for the fourth, 110 and 111; written lowest bit first.
    EXPECT_EQ(codes[2].bits, 0b0U);
    EXPECT_EQ(codes[3].bits, 0b01U);
    EXPECT_EQ(codes[0].bits, 0b011U);
    EXPECT_EQ(codes[4].bits, 0b111U);
}

TEST(HuffmanCode, ASymbolThatIsAloneGetsOneBit) {
    EXPECT_EQ(lengthsOf(codesFor({0, 7, 0}, 12)), (std::vector<unsigned>{0, 1, 0}));
    EXPECT_EQ(lengthsOf(codesFor({0, 0}, 12)), (std::vector<unsigned>{0, 0}));
}

// Each symbol twice as frequent as the one before asks for the longest codes there are.
TEST(HuffmanCode, NoCodeIsLongerThanAllowed) {
    std::vector<uint32_t> frequencies;
    for (unsigned power = 0; power < 30; ++power)
        frequencies.push_back(1U << power);
    for (const unsigned longest : {5U, 6U, 12U, 15U}) {
        double share = 0;
        for (const unsigned length : lengthsOf(codesFor(frequencies, longest))) {
            EXPECT_GE(length, 1U);
            EXPECT_LE(length, longest);
            share += 1.0 / (1U << length);
        }
        EXPECT_EQ(share, 1.0) << longest; // every bit pattern means something, and only one thing
    }
}

TEST(HuffmanCode, NoCodeStartsAnother) {
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        std::vector<uint32_t> frequencies(2 + random() % 284);
        for (uint32_t& frequency : frequencies)
            frequency = random() % 3 == 0
                            ? 0U
                            : static_cast<uint32_t>(1 + random() % (1U << (random() % 20)));
        frequencies[0] = frequencies[1] = 1;
        const auto codes = codesFor(frequencies, 12);
        for (const HuffmanCode& one : codes)
            for (const HuffmanCode& other : codes)
                if (&one != &other && one.length > 0 && other.length >= one.length) {
                    ASSERT_NE(other.bits & ((1U << one.length) - 1), one.bits);
                }
    }
}

TEST(HuffmanCode, BitsAreReversed) {
    EXPECT_EQ(reversedBits(0b0001, 4), 0b1000U);
    EXPECT_EQ(reversedBits(0b110, 3), 0b011U);
    EXPECT_EQ(reversedBits(1, 1), 1U);
}

} // namespace
} // namespace paperline
