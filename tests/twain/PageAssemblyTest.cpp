#include "twain/PageAssembly.h"

#include "twain/FreeMemory.h"
#include "twain/records/TwainConstants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace paperline {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

TW_IMAGEINFO imageInfo(int32_t width, int32_t height, int16_t bitsPerPixel) {
    TW_IMAGEINFO info{};
    info.XResolution = {300, 0};
    info.YResolution = {300, 0};
    info.ImageWidth = width;
    info.ImageLength = height;
    info.SamplesPerPixel = bitsPerPixel == 24 ? 3 : 1;
    info.BitsPerSample[0] = bitsPerPixel == 24 ? int16_t{8} : bitsPerPixel;
    info.BitsPerPixel = bitsPerPixel;
    return info;
}

std::vector<uint8_t> rowOf(const BitmapImageRep& bitmap, int32_t y) {
    return {bitmap.row(y).begin(), bitmap.row(y).end()};
}

TEST(ResolutionDpi, AddsOneOnlyForAFractionOfExactlyOne) {
    EXPECT_EQ(resolutionDpi({300, 0}), 300);
    EXPECT_EQ(resolutionDpi({300, 1}), 301);
    EXPECT_EQ(resolutionDpi({300, 2}), 300);
    EXPECT_EQ(resolutionDpi({300, 0x8000}), 300);
    EXPECT_GE(resolutionDpi({300, 1}), highResolutionDpi);
    EXPECT_LT(resolutionDpi({300, 0}), highResolutionDpi);
}

TEST(ResolutionDpi, CountsNumbersBelowOneAsSeventyTwo) {
    EXPECT_EQ(resolutionDpi({0, 0}), 72);
    EXPECT_EQ(resolutionDpi({-300, 0}), 72);
    EXPECT_EQ(resolutionDpi({0, 1}), 1);
}

TEST(PageHeightAt300Dpi, ScalesInWholeNumbersAndStaysInRange) {
    EXPECT_EQ(pageHeightAt300Dpi(3300, 300), 3300);
    EXPECT_EQ(pageHeightAt300Dpi(3301, 200), 4951);
    EXPECT_EQ(pageHeightAt300Dpi(INT32_MAX, 1), INT32_MAX);
}

TEST(PageLayoutOf, RoundsBilevelLinesUpToBytes) {
    EXPECT_EQ(pageLayout(imageInfo(10, 1, 1))->bytesPerLine, 2);
    EXPECT_EQ(pageLayout(imageInfo(8, 1, 1))->bytesPerLine, 1);
    EXPECT_EQ(pageLayout(imageInfo(1, 1, 1))->bytesPerLine, 1);
}

TEST(PageLayoutOf, MultipliesWidthBySamplesOtherwise) {
    EXPECT_EQ(pageLayout(imageInfo(10, 5, 8))->bytesPerLine, 10);
    const auto colour = pageLayout(imageInfo(10, 5, 24));
    EXPECT_EQ(colour->bytesPerLine, 30);
    EXPECT_EQ(colour->transferBytes, 150U);
    EXPECT_EQ(colour->bitmap.samplesPerPixel, 3);
    EXPECT_EQ(colour->bitmap.bitsPerSample, 8);
}

TEST(PageLayoutOf, TakesDepthsWhoseLinesHoldTheirPixels) {
    EXPECT_EQ(pageLayout(imageInfo(10, 5, 2))->bytesPerLine, 10);
    EXPECT_EQ(pageLayout(imageInfo(10, 5, 4))->bytesPerLine, 10);
    TW_IMAGEINFO fourSamples = imageInfo(10, 5, 32);
    fourSamples.SamplesPerPixel = 4;
    fourSamples.BitsPerSample[0] = 8;
    EXPECT_EQ(pageLayout(fourSamples)->bytesPerLine, 40);
}

TEST(PageLayoutOf, RefusesDepthsWhoseLinesDoNot) {
    EXPECT_FALSE(pageLayout(imageInfo(10, 5, 16)));
    TW_IMAGEINFO deepColour = imageInfo(10, 5, 48);
    deepColour.SamplesPerPixel = 3;
    deepColour.BitsPerSample[0] = 16;
    EXPECT_FALSE(pageLayout(deepColour));
    TW_IMAGEINFO oneSampleColour = imageInfo(10, 5, 24);
    oneSampleColour.SamplesPerPixel = 1;
    EXPECT_FALSE(pageLayout(oneSampleColour));
}

TEST(PageLayoutOf, RefusesSizesThatAreNotPositive) {
    for (int32_t bad : {0, -1, INT32_MIN}) {
        EXPECT_FALSE(pageLayout(imageInfo(bad, 10, 8))) << bad;
        EXPECT_FALSE(pageLayout(imageInfo(10, bad, 8))) << bad;
    }
    for (int16_t bad : {int16_t{0}, int16_t{-1}, std::numeric_limits<int16_t>::min()}) {
        EXPECT_FALSE(pageLayout(imageInfo(10, 10, bad))) << bad;
        TW_IMAGEINFO samples = imageInfo(10, 10, 8);
        samples.SamplesPerPixel = bad;
        EXPECT_FALSE(pageLayout(samples)) << bad;
        TW_IMAGEINFO sampleBits = imageInfo(10, 10, 8);
        sampleBits.BitsPerSample[0] = bad;
        EXPECT_FALSE(pageLayout(sampleBits)) << bad;
    }
}

TEST(PageLayoutOf, RefusesProductsBeyondThe32BitLengthOfARecord) {
    EXPECT_FALSE(pageLayout(imageInfo(INT32_MAX, INT32_MAX, 24)));
    EXPECT_FALSE(pageLayout(imageInfo(INT32_MAX, INT32_MAX, 1)));
    EXPECT_FALSE(pageLayout(imageInfo(INT32_MAX, 3, 8)));
    EXPECT_TRUE(pageLayout(imageInfo(INT32_MAX, 2, 8)));
}

class PageBuffersTest : public ::testing::Test {
protected:
    // Numbers the buffer's bytes 1, 2, 3, ...
    void fillBuffer() {
        std::iota(buffers.transferBuffer().begin(), buffers.transferBuffer().end(), uint8_t{1});
    }
    PageBuffers::CopiedRows strip(uint32_t yOffset, uint32_t rows, uint32_t bytesPerRow) {
        TW_IMAGEMEMXFER record = buffers.stripRecord();
        record.YOffset = yOffset;
        record.Rows = rows;
        record.BytesPerRow = bytesPerRow;
        return buffers.copyStrip(record);
    }
    PageBuffers buffers;
};

TEST_F(PageBuffersTest, FillsAStripRecordWithDontCare) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(10, 4, 8))));
    const TW_IMAGEMEMXFER record = buffers.stripRecord();
    EXPECT_EQ(record.Compression, 0xffff);
    for (uint32_t number : {record.BytesPerRow,
                            record.Columns,
                            record.Rows,
                            record.XOffset,
                            record.YOffset,
                            record.BytesWritten})
        EXPECT_EQ(number, 0xffffffffU);
    EXPECT_EQ(record.Memory.Flags, 9U);
    EXPECT_EQ(record.Memory.Length, 40U);
    EXPECT_EQ(record.Memory.TheMem, buffers.transferBuffer().data());
}

TEST_F(PageBuffersTest, MarksTheFirstThreeBytesOfAStrip) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 2, 8))));
    fillBuffer();
    buffers.markStrip();
    EXPECT_THAT(buffers.transferBuffer(), ElementsAre(0x21, 0x85, 0xE9, 4));
}

TEST_F(PageBuffersTest, MarksNoFurtherThanASmallBuffer) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(1, 1, 8))));
    buffers.markStrip();
    EXPECT_THAT(buffers.transferBuffer(), ElementsAre(0x21));
}

TEST_F(PageBuffersTest, CopiesRowsToTheirPlace) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 4, 8))));
    fillBuffer();
    const auto copied = strip(1, 2, 2);
    EXPECT_EQ(copied.rows, 2U);
    EXPECT_EQ(copied.bytes, 4U);
    buffers.finishPage();
    EXPECT_THAT(rowOf(*buffers.bitmap(), 0), ElementsAre(0, 0));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(1, 2));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(3, 4));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 3), ElementsAre(0, 0));
}

TEST_F(PageBuffersTest, AdvancesByTheStripsOwnLineLength) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(3, 3, 8))));
    fillBuffer();
    strip(0, 2, 4); // padded lines
    EXPECT_THAT(rowOf(*buffers.bitmap(), 0), ElementsAre(1, 2, 3));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(5, 6, 7));
    strip(0, 2, 1); // lines shorter than the page's
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(2, 3, 4));
}

TEST_F(PageBuffersTest, StopsAtTheEndOfTheBuffer) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(3, 3, 8)))); // 9 bytes
    fillBuffer();
    const auto copied = strip(0, 3, 7);
    EXPECT_EQ(copied.rows, 2U);
    EXPECT_EQ(copied.bytes, 5U);
    buffers.finishPage();
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(8, 9, 0));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(0, 0, 0));
}

TEST_F(PageBuffersTest, KeepsTheRestOfARowThatComesAgainCutShort) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(3, 3, 8))));
    fillBuffer();
    strip(0, 3, 3);
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(4, 5, 6));
    fillBuffer();
    strip(0, 3, 7);
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(8, 9, 6));
}

TEST_F(PageBuffersTest, IgnoresWhatLiesOutsideThePage) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 2, 8))));
    fillBuffer();
    EXPECT_EQ(strip(2, 1, 2).rows, 0U);
    EXPECT_EQ(strip(0xffffffff, 0xffffffff, 0xffffffff).rows, 0U);
    EXPECT_EQ(strip(1, 0xffffffff, 2).rows, 1U);
    EXPECT_EQ(strip(0, 0, 2).rows, 0U);
    EXPECT_EQ(strip(0, 2, 0xffffffff).rows, 1U);
}

TEST_F(PageBuffersTest, ShowsNothingOfAnEarlierPage) {
    const PageLayout layout = *pageLayout(imageInfo(2, 3, 8));
    ASSERT_TRUE(buffers.preparePage(layout));
    fillBuffer();
    strip(0, 3, 2);
    buffers.finishPage();
    EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(5, 6));
    const BitmapImageRep* first = buffers.bitmap().get();

    ASSERT_TRUE(buffers.preparePage(layout));
    EXPECT_EQ(buffers.bitmap().get(), first);
    fillBuffer();
    strip(0, 1, 2);
    buffers.finishPage();
    EXPECT_THAT(rowOf(*buffers.bitmap(), 0), ElementsAre(1, 2));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 1), ElementsAre(0, 0));
    EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(0, 0));
}

TEST_F(PageBuffersTest, GivesAWholePageToTheBitmapUncopied) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 3, 8))));
    fillBuffer();
    const uint8_t* sent = buffers.transferBuffer().data();
    const PageBuffers::CopiedRows copied = strip(0, 3, 2);
    EXPECT_EQ(copied.rows, 3U);
    EXPECT_EQ(copied.bytes, 6U);
    EXPECT_EQ(buffers.bitmap()->bitmapData().data(), sent);
    EXPECT_NE(buffers.transferBuffer().data(), sent);
    EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(5, 6));
}

TEST_F(PageBuffersTest, TakesTheNextPageInTheMemoryThatTookTheLast) {
    const PageLayout layout = *pageLayout(imageInfo(2, 3, 8));
    ASSERT_TRUE(buffers.preparePage(layout));
    const uint8_t* first = buffers.transferBuffer().data();
    for (int page = 0; page < 3; ++page) {
        fillBuffer();
        strip(0, 3, 2);
        EXPECT_EQ(buffers.bitmap()->bitmapData().data(), first);
        EXPECT_THAT(rowOf(*buffers.bitmap(), 2), ElementsAre(5, 6));
        ASSERT_TRUE(buffers.preparePage(layout));
        EXPECT_EQ(buffers.transferBuffer().data(), first);
    }
}

TEST_F(PageBuffersTest, HasRoomForLargerPagesAfterAnExchange) {
    for (const int side : {40, 2, 30, 3, 40}) {
        ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(side, side, 8))));
        fillBuffer();
        EXPECT_EQ(strip(0, static_cast<uint32_t>(side), static_cast<uint32_t>(side)).rows,
                  static_cast<uint32_t>(side));
        fillBuffer(); // the exchanged memory, to its end
        EXPECT_EQ(rowOf(*buffers.bitmap(), 0)[1], 2);
    }
}

TEST_F(PageBuffersTest, LeavesABitmapThatIsStillHeldAlone) {
    const PageLayout layout = *pageLayout(imageInfo(2, 1, 8));
    ASSERT_TRUE(buffers.preparePage(layout));
    fillBuffer();
    strip(0, 1, 2);
    const std::shared_ptr<BitmapImageRep> held = buffers.bitmap();
    ASSERT_TRUE(buffers.preparePage(layout));
    EXPECT_NE(buffers.bitmap(), held);
    buffers.finishPage();
    EXPECT_THAT(rowOf(*held, 0), ElementsAre(1, 2));
}

TEST_F(PageBuffersTest, FollowsPagesOfChangingSize) {
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 2, 8))));
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(20, 30, 24))));
    EXPECT_EQ(buffers.transferBuffer().size(), 1800U);
    EXPECT_EQ(buffers.bitmap()->pixelsHigh(), 30);
    ASSERT_TRUE(buffers.preparePage(*pageLayout(imageInfo(2, 2, 1))));
    EXPECT_EQ(buffers.transferBuffer().size(), 2U);
    EXPECT_EQ(buffers.stripRecord().Memory.Length, 2U);
    EXPECT_EQ(buffers.bitmap()->bytesPerRow(), 1);
}

TEST(StripGuardTest, AdmitsARowAStripAndEndsStripsWithoutRows) {
    StripGuard oneRowStrips(5000);
    for (int strip = 0; strip < 5000; ++strip)
        ASSERT_TRUE(oneRowStrips.admits(1));

    StripGuard empty(5000);
    int admitted = 0;
    while (empty.admits(0))
        ++admitted;
    EXPECT_EQ(admitted, 99'999);
}

TEST(StripGuardTest, EndsStripsThatComeAgainAndAgain) {
    StripGuard wholePages(10);
    int admitted = 0;
    while (wholePages.admits(10))
        ++admitted;
    EXPECT_EQ(admitted, 64);
}

TEST(StripGuardTest, EndsAMixtureOfStripsWithAndWithoutRows) {
    StripGuard mixed(10'000);
    int admitted = 0;
    while (mixed.admits(admitted % 100 == 0 ? 1 : 0))
        ++admitted;
    EXPECT_EQ(admitted, 120'000);
}

TEST(PageGuardTest, EndsPagesWithoutRowsAndNeverThoseWith) {
    PageGuard pages;
    for (int page = 0; page < 100'000; ++page)
        ASSERT_TRUE(pages.admits(true, false));
    int admitted = 0;
    while (pages.admits(false, false))
        ++admitted;
    EXPECT_EQ(admitted, 9);
}

TEST(PageGuardTest, EndsCancelledPages) {
    PageGuard pages;
    int admitted = 0;
    while (pages.admits(true, true))
        ++admitted;
    EXPECT_EQ(admitted, 999);
}

TEST(PageGuardTest, StartsAgainAfterAPageWithRows) {
    PageGuard pages;
    for (int round = 0; round < 100; ++round) {
        for (int page = 0; page < 9; ++page)
            ASSERT_TRUE(pages.admits(false, false));
        ASSERT_TRUE(pages.admits(true, false));
    }
}

TEST(FreeMemoryArithmetic, ComparesKibibytesWithTheShiftedArgument) {
    EXPECT_TRUE(hasMemoryFor(0, 0));
    EXPECT_TRUE(hasMemoryFor(uint64_t{1} << 30U, 1)); // 2^20 KiB against 2^20
    EXPECT_FALSE(hasMemoryFor((uint64_t{1} << 30U) - 1, 1));
}

TEST(FreeMemoryArithmetic, KeepsTheLow32BitsOnly) {
    EXPECT_FALSE(hasMemoryFor(uint64_t{1} << 42U, 1)); // 2^32 KiB wrap to none
    EXPECT_TRUE(isMemoryLowForDisplay(536'870'911));
    EXPECT_FALSE(isMemoryLowForDisplay(536'870'912));
    EXPECT_TRUE(isMemoryLowForDisplay(uint64_t{8} << 30U)); // 8 GiB leave a remainder of 0
    EXPECT_FALSE(isMemoryLowForDisplay(0xffffffff));
    EXPECT_EQ(copiedBytesBeforeMemoryCheck, 314'572'800U);
}

TEST(FreeMemoryArithmetic, AsksForRoomOnlyForVeryLargePages) {
    EXPECT_TRUE(isPageAllocatable(uint64_t{1} << 30U, 0));
    EXPECT_FALSE(isPageAllocatable((uint64_t{1} << 30U) + 1, uint64_t{3} << 30U));
    EXPECT_TRUE(isPageAllocatable((uint64_t{1} << 30U) + 1, uint64_t{4} << 30U));
}

} // namespace
} // namespace paperline
