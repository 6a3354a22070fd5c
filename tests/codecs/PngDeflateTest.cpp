#include "codecs/png/PngDeflate.h"

#include <gtest/gtest.h>
#include <libdeflate.h>
#include <memory>
#include <random>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

// What another maker's decoder reads from a whole stream; nothing when it finds fault with it.
Bytes inflated(const Bytes& stream, size_t expectedBytes) {
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decoder(
        libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    Bytes result(expectedBytes);
    const bool good =
        libdeflate_deflate_decompress(
            decoder.get(), stream.data(), stream.size(), result.data(), result.size(), nullptr) ==
        LIBDEFLATE_SUCCESS;
    return good ? result : Bytes();
}

Bytes noise(size_t count) {
    std::mt19937 random(11);
    Bytes bytes(count);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}

TEST(PngDeflate, OneByte) {
    const Bytes stream = deflateBlock(Bytes{200}, DeflatePlace::last);
    ASSERT_FALSE(stream.empty());
    EXPECT_EQ(stream[0] & 0x07, 0b101); // the last block, with codes of its own
    EXPECT_EQ(inflated(stream, 1), Bytes{200});
}

TEST(PngDeflate, ABlockWithinEndsWithAnEmptyStoredOne) {
    const Bytes stream = deflateBlock(Bytes{1, 2, 3}, DeflatePlace::within);
    ASSERT_GT(stream.size(), 4U);
    EXPECT_EQ(stream[0] & 0x07, 0b100);
    EXPECT_EQ(Bytes(stream.end() - 4, stream.end()), (Bytes{0, 0, 0xFF, 0xFF}));
}

TEST(PngDeflate, BlocksCanBePutTogether) {
    Bytes stream = deflateBlock(Bytes{1, 2, 3}, DeflatePlace::within);
    const Bytes second = deflateBlock(noise(1000), DeflatePlace::within);
    const Bytes third = deflateBlock(Bytes(700, 0), DeflatePlace::last);
    stream.insert(stream.end(), second.begin(), second.end());
    stream.insert(stream.end(), third.begin(), third.end());
    Bytes expected{1, 2, 3};
    const Bytes middle = noise(1000);
    expected.insert(expected.end(), middle.begin(), middle.end());
    expected.insert(expected.end(), 700, 0);
    EXPECT_EQ(inflated(stream, expected.size()), expected);
}

TEST(PngDeflate, StretchesOfZerosOfEveryLength) {
    for (size_t zeros = 0; zeros < 800; ++zeros)
        for (const size_t before : {0U, 1U, 7U, 8U, 13U}) {
            Bytes bytes(before, 9);
            bytes.insert(bytes.end(), zeros, 0);
            bytes.insert(bytes.end(), before, 7);
            if (bytes.empty())
                continue;
            ASSERT_EQ(inflated(deflateBlock(bytes, DeflatePlace::last), bytes.size()), bytes)
                << zeros << " zeros after " << before;
        }
}

TEST(PngDeflate, ZerosShrinkToAlmostNothing) {
    const Bytes zeros(256 * 1024, 0);
    const Bytes stream = deflateBlock(zeros, DeflatePlace::last);
    EXPECT_LT(stream.size(), 700U); // the codes, and two bits for 258 zeros
    EXPECT_EQ(inflated(stream, zeros.size()), zeros);
}

TEST(PngDeflate, NoiseHardlyGrows) {
    const Bytes bytes = noise(256 * 1024);
    const Bytes stream = deflateBlock(bytes, DeflatePlace::last);
    EXPECT_LT(stream.size(), bytes.size() + bytes.size() / 100);
    EXPECT_EQ(inflated(stream, bytes.size()), bytes);
}

// Frequencies that would ask for codes of more than 12 bits.
TEST(PngDeflate, VeryUnequalFrequencies) {
    Bytes bytes;
    for (unsigned value = 1; value < 20; ++value)
        bytes.insert(
            bytes.end(), size_t{1} << (value < 17 ? value : 16), static_cast<uint8_t>(value));
    EXPECT_EQ(inflated(deflateBlock(bytes, DeflatePlace::last), bytes.size()), bytes);
}

} // namespace
} // namespace paperline
