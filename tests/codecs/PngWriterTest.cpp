#include "codecs/png/PngWriter.h"

#include "PagePictures.h"
#include "PictureFiles.h"
#include "codecs/png/PngCodec.h"
#include "codecs/png/PngRows.h"

#include <gtest/gtest.h>
#include <string_view>

namespace paperline {
namespace {

using namespace testing_support;

Bytes encoded(const BitmapImageRep& page, const PngOptions& options = {}) {
    return encodePng(page, options).value_or(Bytes());
}

uint32_t bigEndianAt(const Bytes& bytes, size_t at) {
    uint32_t number = 0;
    for (size_t index = at; index < at + 4; ++index)
        number = number << 8U | bytes.at(index);
    return number;
}

// "IHDR pHYs IDAT IEND", each chunk's checksum examined.
std::string chunksOf(const Bytes& file) {
    std::string names;
    for (size_t at = 8; at + 12 <= file.size();) {
        const size_t length = bigEndianAt(file, at);
        const Bytes checked(file.begin() + static_cast<ptrdiff_t>(at + 4),
                            file.begin() + static_cast<ptrdiff_t>(at + 8 + length));
        EXPECT_EQ(bigEndianAt(file, at + 8 + length), crc32(checked));
        names += (names.empty() ? "" : " ") + std::string(checked.begin(), checked.begin() + 4);
        at += 12 + length;
    }
    return names;
}

TEST(PngWriter, HeaderAndDensityOfAColourPage) {
    const Bytes file = encoded(*noisePage(3, 2, 24), {300, 600, 1});
    const Bytes start{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', //
                      0,    0,   0,   13,  'I',  'H',  'D',  'R',  //
                      0,    0,   0,   3,   0,    0,    0,    2,    8, 2, 0, 0, 0};
    ASSERT_GT(file.size(), 62U);
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 29), start);
    // 11811 and 23622 pixels a metre
    const Bytes density{0, 0, 0, 9, 'p', 'H', 'Y', 's', 0, 0, 0x2E, 0x23, 0, 0, 0x5C, 0x46, 1};
    EXPECT_EQ(Bytes(file.begin() + 33, file.begin() + 50), density);
    EXPECT_EQ(chunksOf(file), "IHDR pHYs IDAT IEND");
}

TEST(PngWriter, GreyStaysGreyAndOneBitStaysOneBit) {
    const Bytes grey = encoded(*noisePage(3, 2, 8));
    EXPECT_EQ(grey[24], 8);
    EXPECT_EQ(grey[25], 0);
    const Bytes bits = encoded(*noisePage(3, 2, 1));
    EXPECT_EQ(bits[24], 1);
    EXPECT_EQ(bits[25], 0);
}

TEST(PngWriter, ResolutionsComeBackAsTheyWere) {
    for (const double dpi : {100, 150, 200, 240, 300, 400, 600, 1200}) {
        const auto picture = decodePng(encoded(*noisePage(2, 2, 8), {dpi, 75, 1}), 100);
        ASSERT_TRUE(picture.has_value());
        EXPECT_EQ(picture->horizontalDpi, dpi);
        EXPECT_EQ(picture->verticalDpi, 75);
    }
}

TEST(PngWriter, EveryPixelComesBack) {
    for (const int bits : {1, 8, 24})
        for (const PagePointer& page : edgePages(bits)) {
            const auto picture = decodePng(encoded(*page), 100'000'000);
            ASSERT_TRUE(picture.has_value()) << page->pixelsWide() << "x" << page->pixelsHigh();
            expectSamePixels(*page, *picture->image);
        }
}

TEST(PngWriter, TheFileIsTheSameForEveryNumberOfThreads) {
    const PagePointer page = noisePage(500, 1500, 24); // several blocks
    const Bytes alone = encoded(*page, {300, 300, 1});
    EXPECT_EQ(chunksOf(alone).substr(0, 24), "IHDR pHYs IDAT IDAT IDAT");
    for (const unsigned threads : {2U, 3U, 7U})
        EXPECT_EQ(encoded(*page, {300, 300, threads}), alone);
}

// What a program leaves in a row's last bits must not show in the file.
TEST(PngWriter, BitsBehindTheLastPixelAreZero) {
    const PagePointer page = noisePage(13, 9, 1);
    const Bytes file = encoded(*page);
    for (int32_t y = 0; y < 9; ++y)
        page->row(y)[1] = static_cast<uint8_t>(page->row(y)[1] ^ 0x07);
    EXPECT_EQ(encoded(*page), file);
}

TEST(PngWriter, CleanPaperTakesLittleRoom) {
    const Fill white = [](size_t) { return uint8_t{255}; };
    EXPECT_LT(encoded(*filledPage(2480, 3508, 24, white)).size(), 110'000U);
    EXPECT_LT(encoded(*filledPage(2480, 3508, 1, white)).size(), 10'000U);
}

TEST(PngWriter, OtherDepthsAreRefused) {
    EXPECT_FALSE(encodePng(*BitmapImageRep::make({2, 2, 16, 1, 16, 4}), {}).has_value());
    EXPECT_FALSE(encodePng(*BitmapImageRep::make({2, 2, 8, 4, 32, 8}), {}).has_value());
}

TEST(PngRowFilter, TakesThePaethPredictionWhereItLeavesLess) {
    // An edge that the row above has at the same place: left, above, corner meet it, averages blur.
    PngRowFilter filter(4, 1);
    const Bytes above{10, 10, 90, 90};
    Bytes target(5);
    filter.filter(Bytes{12, 10, 90, 91}, above, target.data());
    EXPECT_EQ(target, (Bytes{4, 2, 254, 0, 1}));
}

TEST(PngRowFilter, TakesTheAverageWhereItLeavesLess) {
    PngRowFilter filter(3, 1);
    const Bytes above{20, 40, 20};
    Bytes target(4);
    // 10 - 20/2, 25 - (10 + 40)/2, 22 - (25 + 20)/2
    filter.filter(Bytes{10, 25, 22}, above, target.data());
    EXPECT_EQ(target, (Bytes{3, 0, 0, 0}));
}

TEST(PngRowFilter, ColoursArePredictedFromTheirOwnKind) {
    PngRowFilter filter(6, 3);
    Bytes target(7);
    filter.filter(Bytes{100, 50, 0, 101, 52, 3}, {}, target.data());
    EXPECT_EQ(target, (Bytes{4, 100, 50, 0, 1, 2, 3}));
}

} // namespace
} // namespace paperline
