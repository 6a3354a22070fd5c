#include "output/ImageScaling.h"

#include "output/GifFlattening.h"

#include <gtest/gtest.h>

#include <vector>

namespace paperline {
namespace {

std::shared_ptr<BitmapImageRep> pageOf(int32_t wide, int32_t high, int bits, int64_t bytesPerRow) {
    return BitmapImageRep::make({.pixelsWide = wide,
                                 .pixelsHigh = high,
                                 .bitsPerSample = bits == 1 ? 1 : 8,
                                 .samplesPerPixel = bits < 24 ? 1 : bits / 8,
                                 .bitsPerPixel = bits,
                                 .bytesPerRow = bytesPerRow});
}

std::vector<uint8_t> pixel(const BitmapImageRep& image, int32_t x, int32_t y) {
    const auto bytes = image.row(y).subspan(static_cast<size_t>(x) * 4, 4);
    return {bytes.begin(), bytes.end()};
}

TEST(Placement, AWideSourceIsCentredVertically) {
    EXPECT_EQ(placeProportionally({200, 100}, {100, 100}), (Rect{0, 25, 100, 50}));
}

TEST(Placement, AHighSourceIsCentredHorizontally) {
    EXPECT_EQ(placeProportionally({100, 200}, {100, 100}), (Rect{25, 0, 50, 100}));
}

TEST(Placement, EqualSizesAreDrawnAtTheOrigin) {
    EXPECT_EQ(placeProportionally({595.2, 841.92}, {595.2, 841.92}), (Rect{0, 0, 595.2, 841.92}));
}

TEST(Placement, AQuarterKeepsItsProportions) {
    EXPECT_EQ(placeProportionally({576, 768}, {144, 192}), (Rect{0, 0, 144, 192}));
}

TEST(DrawScaled, AveragesThePixelsItCovers) {
    const auto page = pageOf(4, 2, 8, 4);
    const std::vector<uint8_t> levels{0, 100, 200, 200, 100, 200, 50, 50};
    std::copy(levels.begin(), levels.end(), page->bitmapData().begin());
    const auto scaled = drawScaled(*page, {2, 1}, {0, 0, 2, 1});
    ASSERT_NE(scaled, nullptr);
    EXPECT_EQ(scaled->pixelsWide(), 2);
    EXPECT_EQ(scaled->bitsPerPixel(), 32);
    EXPECT_EQ(pixel(*scaled, 0, 0), (std::vector<uint8_t>{100, 100, 100, 255}));
    EXPECT_EQ(pixel(*scaled, 1, 0), (std::vector<uint8_t>{125, 125, 125, 255}));
}

TEST(DrawScaled, LeavesTheMarginsTransparent) {
    const auto page = pageOf(2, 1, 24, 6);
    const std::vector<uint8_t> colours{10, 20, 30, 10, 20, 30};
    std::copy(colours.begin(), colours.end(), page->bitmapData().begin());
    const auto scaled = drawScaled(*page, {4, 4}, placeProportionally({2, 1}, {4, 4}));
    ASSERT_NE(scaled, nullptr);
    EXPECT_EQ(pixel(*scaled, 0, 0), (std::vector<uint8_t>{0, 0, 0, 0}));
    EXPECT_EQ(pixel(*scaled, 0, 1), (std::vector<uint8_t>{10, 20, 30, 255}));
    EXPECT_EQ(pixel(*scaled, 3, 2), (std::vector<uint8_t>{10, 20, 30, 255}));
    EXPECT_EQ(pixel(*scaled, 3, 3), (std::vector<uint8_t>{0, 0, 0, 0}));
}

TEST(DrawScaled, ReadsBitsWithOneAsWhite) {
    const auto page = pageOf(8, 1, 1, 1);
    page->bitmapData()[0] = 0b11010000;
    const auto scaled = drawScaled(*page, {4, 1}, {0, 0, 4, 1});
    ASSERT_NE(scaled, nullptr);
    EXPECT_EQ(pixel(*scaled, 0, 0)[0], 255);
    EXPECT_EQ(pixel(*scaled, 1, 0)[0], 128);
    EXPECT_EQ(pixel(*scaled, 2, 0)[0], 0);
}

TEST(DrawScaled, RefusesWhatCannotBeDrawn) {
    const auto page = pageOf(2, 2, 8, 2);
    EXPECT_EQ(drawScaled(*page, {0.5, 10}, {0, 0, 1, 1}), nullptr);
    EXPECT_EQ(drawScaled(*page, {1e9, 1e9}, {0, 0, 1, 1}), nullptr);
    EXPECT_EQ(drawScaled(*page, {4, 4}, {0, 0, 0, 4}), nullptr);
    const auto deep = BitmapImageRep::make({2, 2, 16, 1, 16, 4});
    EXPECT_EQ(drawScaled(*deep, {4, 4}, {0, 0, 4, 4}), nullptr);
}

TEST(GifFlattening, TheSecondComponentIsReadAsHexadecimal) {
    EXPECT_EQ(gifSystemVersionNumber("10.9.5"), 9);
    EXPECT_EQ(gifSystemVersionNumber("10.6.8"), 6);
    EXPECT_EQ(gifSystemVersionNumber("10.10"), 16);
    EXPECT_EQ(gifSystemVersionNumber("10.12.1"), 18);
    EXPECT_EQ(gifSystemVersionNumber("10.13.1"), 19);
    EXPECT_EQ(gifSystemVersionNumber("12"), 0);
    EXPECT_EQ(gifSystemVersionNumber(""), 0);
}

TEST(GifFlattening, AppliesBeforeSevenAndFromNineteen) {
    EXPECT_TRUE(flattensGif(6));
    EXPECT_FALSE(flattensGif(7));
    EXPECT_FALSE(flattensGif(9));
    EXPECT_FALSE(flattensGif(18));
    EXPECT_TRUE(flattensGif(19));
}

TEST(GifFlattening, TheListsCopiesFlattenInOneSeriesOnly) {
    EXPECT_FALSE(flattensTransferredGif(0x105F));
    EXPECT_TRUE(flattensTransferredGif(0x1060));
    EXPECT_TRUE(flattensTransferredGif(0x106F));
    EXPECT_FALSE(flattensTransferredGif(0x1070));
    EXPECT_FALSE(flattensTransferredGif(0x10120)); // what this platform counts as
}

} // namespace
} // namespace paperline
