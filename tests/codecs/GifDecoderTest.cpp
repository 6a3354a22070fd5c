#include "codecs/gif/GifDecoder.h"

#include "codecs/gif/LzwDecoder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint64_t plenty = 1'000'000;

// Codes with their widths in bits, and the spare bytes.
Bytes packed(const std::vector<std::pair<unsigned, unsigned>>& codes) {
    Bytes bytes;
    size_t bit = 0;
    for (const auto& [code, width] : codes)
        for (unsigned place = 0; place < width; ++place, ++bit) {
            if (bit % 8 == 0)
                bytes.push_back(0);
            bytes.back() = static_cast<uint8_t>(bytes.back() | (code >> place & 1U) << bit % 8);
        }
    bytes.resize(bytes.size() + lzwSpareBytes, 0xFF);
    return bytes;
}

// Empty when there are none.
Bytes expanded(const Bytes& codes, unsigned literalBits, size_t count) {
    const PageMemory memory = expandLzw(codes, literalBits, count);
    if (!memory)
        return {};
    const uint8_t* first = memory.get() + lzwFirstPixel;
    return {first, first + count};
}

TEST(LzwDecoding, LiteralsAndStrings) {
    // Literals of 2 bits: 4 clears, 5 ends, 6 is "1 2", 7 "2 6", with which codes have 4 bits.
    const Bytes codes = packed({{4, 3}, {1, 3}, {2, 3}, {6, 3}, {7, 4}, {5, 4}});
    EXPECT_EQ(expanded(codes, 2, 6), (Bytes{1, 2, 1, 2, 2, 1}));
}

TEST(LzwDecoding, AStringMayEndWithItsOwnFirstPixel) {
    // 6 is used as it is made: "3 3"; so is 7: "3 3 3".
    const Bytes codes = packed({{4, 3}, {3, 3}, {6, 3}, {7, 3}, {5, 4}});
    EXPECT_EQ(expanded(codes, 2, 6), Bytes(6, 3));
}

TEST(LzwDecoding, ATableMayBeginAgainAnywhere) {
    const Bytes codes =
        packed({{4, 3}, {4, 3}, {1, 3}, {2, 3}, {4, 3}, {3, 3}, {6, 3}, {4, 3}, {4, 3}, {5, 3}});
    EXPECT_TRUE(expanded(codes, 2, 5).empty()); // cleared once more behind the last pixel
    EXPECT_EQ(
        expanded(packed({{4, 3}, {4, 3}, {1, 3}, {2, 3}, {4, 3}, {3, 3}, {6, 3}, {5, 3}}), 2, 5),
        (Bytes{1, 2, 3, 3, 3}));
}

TEST(LzwDecoding, TheFirstClearAndTheEndMayBeMissing) {
    EXPECT_EQ(expanded(packed({{1, 3}, {2, 3}}), 2, 2), (Bytes{1, 2}));
    EXPECT_EQ(expanded(packed({{1, 3}, {2, 3}, {5, 3}}), 2, 2), (Bytes{1, 2}));
}

TEST(LzwDecoding, AFullTableStaysAsItIs) {
    // Codes 258 to 4095 are pairs of literals; 12 bits go on.
    std::vector<std::pair<unsigned, unsigned>> codes{{256, 9}};
    Bytes expected;
    unsigned next = 258;
    unsigned width = 9;
    for (unsigned count = 0; count < 5000; ++count) {
        const unsigned literal = count * 7 % 251;
        codes.emplace_back(literal, width);
        expected.push_back(static_cast<uint8_t>(literal));
        if (count > 0 && next < 4096 && ++next == 1U << width && width < 12)
            ++width;
    }
    codes.emplace_back(4095, 12); // the last pair that was taken in
    const auto pair = expected.begin() + (4095 - 258);
    expected.insert(expected.end(), {*pair, *(pair + 1)});
    codes.emplace_back(257, 12);
    EXPECT_EQ(expanded(packed(codes), 8, expected.size()), expected);
}

TEST(LzwDecoding, CodesThatMeanNothing) {
    EXPECT_TRUE(expanded(packed({{4, 3}, {6, 3}, {5, 3}}), 2, 1).empty()); // no string yet
    EXPECT_TRUE(expanded(packed({{4, 3}, {1, 3}, {7, 3}}), 2, 3).empty()); // one ahead
    EXPECT_TRUE(expanded(packed({{4, 3}, {1, 3}, {5, 3}}), 2, 2).empty()); // too few
    EXPECT_TRUE(expanded(packed({{4, 3}, {1, 3}, {2, 3}}), 2, 3).empty()); // cut off
    EXPECT_TRUE(expanded(packed({{4, 3}, {1, 3}, {6, 3}}), 2, 2).empty()); // too many
    EXPECT_TRUE(expanded(packed({{4, 3}, {1, 3}, {2, 3}}), 2, 1).empty()); // too many
    EXPECT_TRUE(expanded(packed({}), 2, 1).empty());
    EXPECT_TRUE(expanded({}, 2, 1).empty());
    EXPECT_TRUE(expanded(packed({{1, 3}, {5, 3}}), 2, 0).empty());
    for (const unsigned bits : {0U, 1U, 9U, 12U, 300U})
        EXPECT_TRUE(expanded(Bytes(100), bits, 10).empty()) << bits;
}

// Two colours, 2 x 2 pixels: black, white, white, black.
Bytes tinyGif() {
    return {'G',  'I', 'F',  '8',  '7',  'a',  2, 0, 2, 0, 0x80, 0, 0, // screen and palette
            10,   20,  30,   0xFF, 0xFE, 0xFD,                         // the palette
            0x2C, 0,   0,    0,    0,    2,    0, 2, 0, 0,             // the picture's place
            2,    3,   0x44, 0x02, 0x05, 0,                            // codes 4 0 1 1 0 5
            0x3B};
}

Bytes placesOf(const GifPicture& picture) {
    Bytes places;
    for (int32_t y = 0; y < picture.height; ++y)
        places.insert(places.end(), picture.row(y).begin(), picture.row(y).end());
    return places;
}

TEST(GifDecoding, EveryByteOfATinyFile) {
    const auto picture = decodeGif(tinyGif(), plenty);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->screenWidth, 2);
    EXPECT_EQ(picture->screenHeight, 2);
    EXPECT_EQ(picture->width, 2);
    EXPECT_EQ(picture->height, 2);
    EXPECT_EQ(placesOf(*picture), (Bytes{0, 1, 1, 0}));
    EXPECT_EQ(picture->colours[0], (PaletteColour{10, 20, 30}));
    EXPECT_EQ(picture->colours[1], (PaletteColour{255, 254, 253}));
    EXPECT_EQ(picture->colours[2], (PaletteColour{255, 255, 255}));
    EXPECT_EQ(picture->behind, picture->colours[0]);
    EXPECT_FALSE(picture->isGrey());
}

TEST(GifDecoding, HasItsPixelsCountedFirst) {
    EXPECT_TRUE(decodeGif(tinyGif(), 4).has_value());
    EXPECT_FALSE(decodeGif(tinyGif(), 3).has_value());
    Bytes vast = tinyGif();
    for (const size_t at : {6U, 7U, 8U, 9U, 24U, 25U, 26U, 27U})
        vast[at] = 0xFF;
    EXPECT_FALSE(decodeGif(vast, plenty).has_value());
    EXPECT_FALSE(decodeGif(vast, UINT64_MAX).has_value()); // a few codes for 4 thousand million
}

TEST(GifDecoding, NothingIsNoPicture) {
    for (const size_t at : {6U, 8U, 24U, 26U}) { // a side of the screen, of the picture
        Bytes file = tinyGif();
        file[at] = 0;
        EXPECT_FALSE(decodeGif(file, plenty).has_value()) << at;
    }
}

TEST(GifDecoding, CutFilesGiveNothing) {
    const Bytes whole = tinyGif();
    for (size_t length = 0; length + 1 < whole.size(); ++length)
        EXPECT_FALSE(decodeGif(std::span(whole).first(length), plenty).has_value()) << length;
}

TEST(GifDecoding, WithoutAPaletteThereAreNoColours) {
    Bytes file = tinyGif();
    file[10] = 0;
    file.erase(file.begin() + 13, file.begin() + 19);
    EXPECT_FALSE(decodeGif(file, plenty).has_value());
}

// It is the screen's colour, also where the picture has a palette of its own.
TEST(GifDecoding, BehindThePictureTheScreenShows) {
    const Bytes own{1, 2, 3, 4, 5, 6};
    Bytes file = tinyGif();
    file[28] = 0x80;
    file.insert(file.begin() + 29, own.begin(), own.end());
    file[11] = 1; // the second colour of the screen
    auto picture = decodeGif(file, plenty);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->colours[0], (PaletteColour{1, 2, 3}));
    EXPECT_EQ(picture->behind, (PaletteColour{255, 254, 253}));
    file[11] = 9; // which it does not have
    picture = decodeGif(file, plenty);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->behind, (PaletteColour{255, 255, 255}));
}

TEST(GifDecoding, ExtensionsMayStandInFront) {
    const Bytes control{0x21, 0xF9, 4, 1, 0, 0, 1, 0}; // the second colour is transparent
    const Bytes comment{0x21, 0xFE, 2, 'h', 'i', 0};
    Bytes file = tinyGif();
    file.insert(file.begin() + 19, comment.begin(), comment.end());
    file.insert(file.begin() + 19, control.begin(), control.end());
    const auto picture = decodeGif(file, plenty);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->colours[1], (PaletteColour{255, 255, 255}));
    EXPECT_EQ(picture->behind, (PaletteColour{255, 255, 255}));
    file[21] = 3; // of another length than the format says
    EXPECT_FALSE(decodeGif(file, plenty).has_value());
}

TEST(GifDecoding, OtherBlocksAreNoPicture) {
    Bytes file = tinyGif();
    file[19] = 0x3B; // the end
    EXPECT_FALSE(decodeGif(file, plenty).has_value());
    file[19] = 0x00;
    EXPECT_FALSE(decodeGif(file, plenty).has_value());
}

} // namespace
} // namespace paperline
