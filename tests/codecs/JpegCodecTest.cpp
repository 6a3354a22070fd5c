#include "codecs/jpeg/JpegCodec.h"

#include "codecs/jpeg/JpegHeader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

std::shared_ptr<BitmapImageRep> greyGradient(int32_t width, int32_t height) {
    auto page = BitmapImageRep::makePage(width, height, 8);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            page->row(y)[static_cast<size_t>(x)] = static_cast<uint8_t>((x * 3 + y * 2) % 256);
    return page;
}

std::shared_ptr<BitmapImageRep> colourNoise(int32_t width, int32_t height) {
    auto page = BitmapImageRep::makePage(width, height, 24);
    std::mt19937 random(7);
    for (uint8_t& sample : page->bitmapData())
        sample = static_cast<uint8_t>(random());
    return page;
}

// Where the marker FF `code` stands among the segments, or the size.
size_t segment(const Bytes& file, uint8_t code) {
    size_t at = 2;
    while (at + 4 <= file.size() && file[at] == 0xFF && file[at + 1] != code)
        at += 2 + (size_t{file[at + 2]} << 8U) + file[at + 3];
    return at + 4 <= file.size() ? at : file.size();
}

Bytes encoded(const BitmapImageRep& page, const JpegOptions& options = {}) {
    return encodeJpeg(page, options).value_or(Bytes());
}

TEST(JpegEncoding, StoresTheDensity) {
    const Bytes file = encoded(*greyGradient(16, 8), {75, 300, 0x1234});
    ASSERT_GT(file.size(), 20U);
    // SOI, APP0 of 16 bytes "JFIF" 1.01, dots per inch, 300 and 0x1234, no thumbnail
    const Bytes start{0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x10, 'J',  'F',  'I',  'F',
                      0x00, 0x01, 0x01, 0x01, 0x01, 0x2C, 0x12, 0x34, 0x00, 0x00};
    EXPECT_TRUE(std::equal(start.begin(), start.end(), file.begin()));
    EXPECT_EQ(file[file.size() - 2], 0xFF);
    EXPECT_EQ(file[file.size() - 1], 0xD9);
}

JpegHeader headerOf(const Bytes& file) {
    ByteReader bytes(file);
    return readJpegHeader(bytes).value_or(JpegHeader());
}

TEST(JpegHeader, TurnsDotsPerCentimetreToInches) {
    Bytes file = encoded(*greyGradient(16, 8), {75, 118, 59});
    uint8_t& unit = file.at(13);
    EXPECT_EQ(headerOf(file).horizontalDpi, 118);
    unit = 2;
    EXPECT_DOUBLE_EQ(headerOf(file).horizontalDpi, 118 * 2.54);
    EXPECT_DOUBLE_EQ(headerOf(file).verticalDpi, 59 * 2.54);
    unit = 0; // only a proportion
    EXPECT_EQ(headerOf(file).horizontalDpi, 0);
}

TEST(JpegHeader, IsCommonOnlyUpToAScan) {
    const Bytes file = encoded(*greyGradient(61, 47));
    EXPECT_EQ(headerOf(file).size, (PixelSize{61, 47}));
    EXPECT_TRUE(headerOf(file).isCommon);
    const Bytes start(file.begin(), file.begin() + static_cast<ptrdiff_t>(segment(file, 0xDA)));
    EXPECT_EQ(headerOf(start).size, (PixelSize{61, 47}));
    EXPECT_FALSE(headerOf(start).isCommon);
    EXPECT_EQ(headerOf({0xFF, 0xD8, 0xFF}).size, PixelSize{});
}

TEST(JpegEncoding, IsBaselineWithOneComponentForGrey) {
    const Bytes file = encoded(*greyGradient(16, 8));
    const size_t frame = segment(file, 0xC0);
    ASSERT_LT(frame, file.size());
    // length 11, 8 bits, 8 rows, 16 columns, one component sampled 1x1
    const Bytes expected{0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 16, 1, 1, 0x11, 0};
    EXPECT_TRUE(
        std::equal(expected.begin(), expected.end(), file.begin() + static_cast<ptrdiff_t>(frame)));
}

TEST(JpegEncoding, HalvesTheColoursOfColourPages) {
    const Bytes file = encoded(*colourNoise(16, 8));
    const size_t frame = segment(file, 0xC0);
    ASSERT_LT(frame + 18, file.size());
    EXPECT_EQ(file[frame + 9], 3);
    EXPECT_EQ(file[frame + 11], 0x22); // Y
    EXPECT_EQ(file[frame + 14], 0x11); // Cb
    EXPECT_EQ(file[frame + 17], 0x11); // Cr
}

TEST(JpegEncoding, TurnsBitsToGreyWithZeroAsBlack) {
    auto page = BitmapImageRep::makePage(16, 16, 1);
    for (int32_t y = 0; y < 16; ++y)
        page->row(y)[1] = 0xFF; // the right half white
    const auto decoded = decodeJpeg(encoded(*page, {100, 72, 72}));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->image->bitsPerPixel(), 8);
    EXPECT_LT(decoded->image->row(3)[2], 3);
    EXPECT_GT(decoded->image->row(3)[13], 252);
}

TEST(JpegEncoding, FollowsTheQuality) {
    const auto page = colourNoise(64, 64);
    size_t before = 0;
    for (const int quality : {1, 25, 50, 75, 100}) {
        const size_t size = encoded(*page, {quality, 72, 72}).size();
        EXPECT_GT(size, before) << quality;
        before = size;
    }
    EXPECT_EQ(encoded(*page, {0, 72, 72}), encoded(*page, {1, 72, 72}));
    EXPECT_EQ(encoded(*page, {1000, 72, 72}), encoded(*page, {100, 72, 72}));
}

TEST(JpegEncoding, RefusesPagesItCannotHold) {
    EXPECT_FALSE(encodeJpeg(*BitmapImageRep::makePage(65501, 1, 8), {}).has_value());
    EXPECT_FALSE(encodeJpeg(*BitmapImageRep::makePage(1, 65501, 8), {}).has_value());
    EXPECT_TRUE(encodeJpeg(*BitmapImageRep::makePage(65500, 1, 8), {}).has_value());
    EXPECT_TRUE(encodeJpeg(*BitmapImageRep::makePage(1, 65500, 1), {}).has_value());
    EXPECT_FALSE(encodeJpeg(*BitmapImageRep::make({4, 4, 8, 4, 32, 16}), {}).has_value());
    EXPECT_FALSE(encodeJpeg(*BitmapImageRep::make({4, 4, 16, 3, 48, 24}), {}).has_value());
    EXPECT_FALSE(encodeJpeg(*BitmapImageRep::make({4, 4, 2, 1, 2, 1}), {}).has_value());
}

TEST(JpegEncoding, SkipsThePaddingOfRows) {
    const auto tight = colourNoise(5, 9);
    auto padded = BitmapImageRep::make({5, 9, 8, 3, 24, 32});
    for (int32_t y = 0; y < 9; ++y) {
        std::ranges::fill(padded->row(y), uint8_t{0xAA});
        std::ranges::copy(tight->row(y), padded->row(y).begin());
    }
    EXPECT_EQ(encoded(*padded), encoded(*tight));
}

TEST(JpegEncoding, GrowsWithItsData) {
    // At full quality noise takes more room than an eighth of the page and the first guess.
    const auto page = colourNoise(700, 700);
    const Bytes file = encoded(*page, {100, 300, 300});
    EXPECT_GT(file.size(), page->bitmapData().size() / 4 + 65536);
    EXPECT_TRUE(decodeJpeg(file).has_value());
}

TEST(JpegDecoding, GivesThePageBack) {
    const auto page = greyGradient(61, 47);
    const auto decoded = decodeJpeg(encoded(*page, {100, 300, 200}));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(decoded->image->pixelsWide(), 61);
    EXPECT_EQ(decoded->image->pixelsHigh(), 47);
    EXPECT_EQ(decoded->horizontalDpi, 300);
    EXPECT_EQ(decoded->verticalDpi, 200);
    // The gradient's wrap-around is the hardest edge there is.
    int worst = 0;
    for (size_t index = 0; index < page->bitmapData().size(); ++index)
        worst = std::max(worst,
                         std::abs(page->bitmapData()[index] - decoded->image->bitmapData()[index]));
    EXPECT_LE(worst, 4);
}

TEST(JpegDecoding, KnowsDensitiesPerCentimetreAndNone) {
    Bytes file = encoded(*greyGradient(8, 8), {75, 100, 100});
    file[13] = 2;
    EXPECT_DOUBLE_EQ(decodeJpeg(file)->horizontalDpi, 254);
    file[13] = 0;
    EXPECT_EQ(decodeJpeg(file)->horizontalDpi, 0);
    EXPECT_EQ(decodeJpeg(file)->image->size(), (Size{8, 8}));
}

TEST(JpegDecoding, RefusesDataThatEndsEarly) {
    const Bytes file = encoded(*colourNoise(40, 40));
    for (size_t length = 0; length < file.size() - 2; length += 7)
        EXPECT_FALSE(decodeJpeg(std::span(file).first(length)).has_value()) << length;
    EXPECT_FALSE(decodeJpeg(std::span(file).first(file.size() - 2)).has_value());
    EXPECT_TRUE(decodeJpeg(file).has_value());
}

TEST(JpegDecoding, RefusesOtherData) {
    EXPECT_FALSE(decodeJpeg(Bytes{}).has_value());
    EXPECT_FALSE(decodeJpeg(Bytes(100, 0)).has_value());
    EXPECT_FALSE(decodeJpeg(Bytes{0xFF, 0xD8, 0xFF, 0xD9}).has_value());
    EXPECT_FALSE(decodeJpeg(Bytes{0xFF, 0xD8, 0xFF}).has_value());
}

TEST(JpegDecoding, OutlivesDamage) {
    const Bytes seed = encoded(*colourNoise(48, 48));
    std::mt19937 random(11);
    unsigned refused = 0;
    for (int round = 0; round < 1000; ++round) {
        Bytes file = seed;
        for (int change = 0; change < 4; ++change)
            file[random() % file.size()] = static_cast<uint8_t>(random());
        const auto decoded = decodeJpeg(file);
        if (!decoded) {
            ++refused;
            continue;
        }
        EXPECT_LE(decoded->image->pixelsWide(), 65535);
    }
    EXPECT_GT(refused, 0U);
    EXPECT_LT(refused, 1000U);
}

} // namespace
} // namespace paperline
