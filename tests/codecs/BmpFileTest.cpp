#include "codecs/bmp/BmpFile.h"

#include "codecs/bmp/ChannelSwap.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

class BmpFile : public testing::Test {
protected:
    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    static Bytes bytesOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    // The whole way of a page through the leaf, as the writer's operation goes it.
    Bytes write(const BmpPageLayout& page, Bytes pixels, uint32_t dpi) {
        if (page.bitsPerPixel == 24)
            swapRedAndBlue(pixels.data(), page.pixelsHigh, page.bytesPerRow);
        auto block = BmpBlock::allocate(page);
        if (!block)
            return {};
        block->copyRowsBottomUp(pixels.data());
        const auto stride = static_cast<uint32_t>(bmpStride(page.pixelsWide, page.bitsPerPixel));
        const BmpWriteResult result = writebmp(path("p.bmp").c_str(),
                                               makeBmpHeader(page, dpi, dpi),
                                               bmpPixelOffset(page.bitsPerPixel),
                                               block->rows(),
                                               stride);
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(result.complete);
        const std::span<const uint8_t> whole =
            block->fileBytes(makeBmpHeader(page, dpi, dpi), bmpPixelOffset(page.bitsPerPixel));
        const Bytes file = bytesOf(path("p.bmp"));
        EXPECT_EQ(file, Bytes(whole.begin(), whole.end()));
        return file;
    }
    const testing_support::TestFolder testFolder_;
    const std::string& folder_ = testFolder_.path();
};

uint32_t doubleWord(std::span<const uint8_t> bytes, size_t at) {
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
           static_cast<uint32_t>(bytes[at + 2]) << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

TEST(BmpHeader, OfABilevelLetterPageByteForByte) {
    const BmpHeaderRecord header = makeBmpHeader({2550, 3300, 1, 319}, 300, 300);
    const Bytes expected{
        0x42, 0x4D,             // "BM"
        0x74, 0x1D, 0x10, 0x00, // 1056116: header counted twice
        0x00, 0x00, 0x00, 0x00, // reserved
        0x3E, 0x00, 0x00, 0x00, // 62
        0x28, 0x00, 0x00, 0x00, // 40
        0xF6, 0x09, 0x00, 0x00, // 2550
        0xE4, 0x0C, 0x00, 0x00, // 3300
        0x01, 0x00,             // planes
        0x01, 0x00,             // bits
        0x00, 0x00, 0x00, 0x00, // uncompressed
        0x00, 0x1D, 0x10, 0x00, // 1056000
        0x23, 0x2E, 0x00, 0x00, // 11811
        0x23, 0x2E, 0x00, 0x00, // 11811
        0x02, 0x00, 0x00, 0x00, // colours used
        0x02, 0x00, 0x00, 0x00, // important
        0x00, 0x00, 0x00, 0x00, // black
        0xFF, 0xFF, 0xFF, 0x00, // white
    };
    ASSERT_EQ(expected.size(), 62U);
    EXPECT_EQ(Bytes(header.begin(), header.begin() + 62), expected);
    for (size_t i = 62; i < header.size(); ++i)
        ASSERT_EQ(header[i], 0) << i;
}

TEST(BmpHeader, OfAGreyPageHasARampOf256Levels) {
    const BmpHeaderRecord header = makeBmpHeader({100, 100, 8, 100}, 200, 100);
    EXPECT_EQ(doubleWord(header, 2), 54U + 1078U + 10000U);
    EXPECT_EQ(doubleWord(header, 10), 1078U);
    EXPECT_EQ(doubleWord(header, 34), 10000U);
    EXPECT_EQ(doubleWord(header, 38), 7873U);
    EXPECT_EQ(doubleWord(header, 42), 3936U);
    EXPECT_EQ(doubleWord(header, 46), 256U);
    EXPECT_EQ(doubleWord(header, 50), 0U);
    for (uint32_t level = 0; level < 256; ++level)
        ASSERT_EQ(doubleWord(header, 54 + 4 * level), level * 0x010101U);
}

TEST(BmpHeader, CountsTheHeaderTwiceInItsFileSize) {
    const BmpHeaderRecord header = makeBmpHeader({100, 10, 24, 300}, 300, 300);
    EXPECT_EQ(bmpStride(100, 24), 300U);
    EXPECT_EQ(doubleWord(header, 2), 3108U);
    EXPECT_EQ(doubleWord(header, 10), 54U);
    EXPECT_EQ(doubleWord(header, 46), 0U);
    EXPECT_EQ(doubleWord(header, 50), 0U);
    for (size_t i = 54; i < header.size(); ++i)
        ASSERT_EQ(header[i], 0) << i;
}

TEST(BmpHeader, ResolutionsShowTheBinaryRoundingOfTheirFactor) {
    const auto metres = [](uint32_t dpi) {
        return doubleWord(makeBmpHeader({1, 1, 8, 1}, dpi, 0), 38);
    };
    EXPECT_EQ(metres(300), 11811U);
    EXPECT_EQ(metres(600), 23622U);
    EXPECT_EQ(metres(200), 7873U);
    EXPECT_EQ(metres(100), 3936U);
    EXPECT_EQ(metres(150), 5905U);
    EXPECT_EQ(metres(UINT32_MAX), UINT32_MAX);
}

TEST(BmpHeader, StridesAreMultiplesOfFour) {
    EXPECT_EQ(bmpStride(2550, 1), 320U);
    EXPECT_EQ(bmpStride(1, 24), 4U);
    EXPECT_EQ(bmpStride(1, 1), 4U);
    EXPECT_EQ(bmpStride(32, 1), 4U);
    EXPECT_EQ(bmpStride(33, 1), 8U);
    EXPECT_EQ(bmpStride(5, 8), 8U);
    EXPECT_EQ(bmpStride(INT32_MAX, 24), 6442450944U); // does not wrap
}

TEST(BmpHeader, TheSpaceEstimateCountsTenSpareRowsAndTheSamples) {
    EXPECT_EQ(bmpSpaceEstimate({2480, 3508, 24, 7440}), int64_t{2480} * 3518 * 3);
    EXPECT_EQ(bmpSpaceEstimate({100, 100, 8, 100}), 11000);
    EXPECT_EQ(bmpSpaceEstimate({INT32_MAX, INT32_MAX, 1, 1}), int64_t{INT32_MAX} * 2147483657);
}

TEST_F(BmpFile, AColourPageIsStoredBottomUpInBgrOrder) {
    const Bytes file = write({2, 2, 24, 6}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0}, 300);
    ASSERT_EQ(file.size(), 54U + 16U);
    EXPECT_EQ(Bytes(file.begin() + 54, file.end()),
              (Bytes{9, 8, 7, 12, 11, 10, 0, 0, 3, 2, 1, 6, 5, 4, 0, 0}));
}

TEST_F(BmpFile, AOnePixelColourPageHasOneByteOfPadding) {
    const Bytes file = write({1, 1, 24, 3}, {0x10, 0x20, 0x30}, 300);
    ASSERT_EQ(file.size(), 58U);
    EXPECT_EQ(Bytes(file.begin() + 54, file.end()), (Bytes{0x30, 0x20, 0x10, 0}));
}

TEST_F(BmpFile, ABilevelPageKeepsItsBitsAndItsTwoColours) {
    const Bytes file = write({10, 2, 1, 2}, {0xAA, 0x80, 0x55, 0x40}, 300);
    ASSERT_EQ(file.size(), 62U + 8U);
    EXPECT_EQ(Bytes(file.begin() + 62, file.end()), (Bytes{0x55, 0x40, 0, 0, 0xAA, 0x80, 0, 0}));
}

TEST_F(BmpFile, AGreyPageFollowsItsPalette) {
    const Bytes file = write({3, 2, 8, 3}, {1, 2, 3, 4, 5, 6}, 300);
    ASSERT_EQ(file.size(), 1078U + 8U);
    EXPECT_EQ(Bytes(file.begin() + 1078, file.end()), (Bytes{4, 5, 6, 0, 1, 2, 3, 0}));
}

TEST_F(BmpFile, RowsLongerThanTheFilesStayInsideTheBlock) {
    // A row of 100 bytes for one 8-bit pixel: far more than ten spare rows of four bytes.
    const BmpPageLayout page{1, 3, 8, 100};
    auto block = BmpBlock::allocate(page);
    ASSERT_TRUE(block.has_value());
    Bytes pixels(300);
    std::iota(pixels.begin(), pixels.end(), uint8_t{0});
    block->copyRowsBottomUp(pixels.data());
    EXPECT_EQ(block->rows()[0], 200);
    EXPECT_EQ(block->rows()[4], 100);
    EXPECT_EQ(block->rows()[8], 0);
}

TEST_F(BmpFile, AMissingFolderGivesTheMessageOnTheChosenStream) {
    std::FILE* message = std::fopen(path("message").c_str(), "w");
    ASSERT_NE(message, nullptr);
    bmpMessageStream = message;
    const uint8_t row[4] = {};
    const BmpWriteResult result = writebmp(
        path("missing/p.bmp").c_str(), makeBmpHeader({1, 1, 8, 1}, 300, 300), 1078, row, 4);
    bmpMessageStream = nullptr;
    std::fclose(message);
    EXPECT_EQ(result.code, -1);
    EXPECT_FALSE(result.complete);
    const Bytes text = bytesOf(path("message"));
    EXPECT_EQ(std::string(text.begin(), text.end()), "writebmp: file open error\n");
}

TEST_F(BmpFile, TheMessageGoesToStandardOutputByDefault) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(reportBmpOpenError(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "writebmp: file open error\n");
}

TEST_F(BmpFile, AShortWriteIsNotExaminedButKnown) {
    const Bytes rows(4096);
    const BmpWriteResult result =
        writebmp("/dev/full", makeBmpHeader({1024, 4, 8, 1024}, 300, 300), 1078, rows.data(), 1024);
    EXPECT_EQ(result.code, 1);
    EXPECT_FALSE(result.complete);
}

TEST_F(BmpFile, NothingIsWrittenThroughALinkInASharedFolder) {
    ASSERT_EQ(chmod(folder_.c_str(), 01777), 0);
    std::ofstream(path("message")) << "precious";
    ASSERT_EQ(symlink(path("message").c_str(), path("p.bmp").c_str()), 0);
    const uint8_t row[4] = {};
    testing::internal::CaptureStdout();
    const BmpWriteResult result =
        writebmp(path("p.bmp").c_str(), makeBmpHeader({1, 1, 8, 1}, 300, 300), 1078, row, 4);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "writebmp: file open error\n");
    EXPECT_EQ(result.code, -1);
    const Bytes text = bytesOf(path("message"));
    EXPECT_EQ(std::string(text.begin(), text.end()), "precious");
}

int askedForMemory = 0;

PageMemory countedMemory(size_t byteCount) {
    ++askedForMemory;
    return allocatePageMemory(byteCount);
}

TEST(BmpBlock, TakesTheMemoryOfTheLastLargeOneOfItsSize) {
    const BmpAllocator usual = std::exchange(bmpAllocator, countedMemory);
    const BmpPageLayout large{1000, 1000, 24, 3000};
    for (int page = 0; page < 3; ++page)
        EXPECT_TRUE(BmpBlock::allocate(large).has_value());
    EXPECT_EQ(askedForMemory, 1);
    EXPECT_TRUE(BmpBlock::allocate({1000, 1001, 24, 3000}).has_value());
    EXPECT_EQ(askedForMemory, 2);
    {
        const auto one = BmpBlock::allocate(large);
        const auto other = BmpBlock::allocate(large);
        ASSERT_TRUE(one && other);
        EXPECT_NE(one->rows(), other->rows());
    }
    EXPECT_EQ(askedForMemory, 4);
    freeSpareBmpMemory();
    EXPECT_TRUE(BmpBlock::allocate(large).has_value());
    EXPECT_EQ(askedForMemory, 5);
    freeSpareBmpMemory();
    bmpAllocator = usual;
}

TEST_F(BmpFile, WithoutMemoryThereIsNoBlock) {
    const BmpAllocator usual = bmpAllocator;
    bmpAllocator = [](size_t) { return PageMemory(); };
    EXPECT_FALSE(BmpBlock::allocate({1, 1, 8, 1}).has_value());
    bmpAllocator = usual;
    EXPECT_FALSE(BmpBlock::allocate({INT32_MAX, INT32_MAX, 24, INT64_MAX}).has_value());
    EXPECT_FALSE(BmpBlock::allocate({0, 1, 8, 1}).has_value());
}

// The rule itself, byte by byte.
void swapByTheBook(uint8_t* pixels, int32_t rows, int64_t bytesPerRow) {
    for (int64_t y = 0; y < rows; ++y) {
        for (int64_t x = 0; x < bytesPerRow; x += 3)
            std::swap(pixels[y * bytesPerRow + x], pixels[y * bytesPerRow + x + 2]);
    }
}

TEST(ChannelSwap, FollowsTheRuleForEveryRowLength) {
    std::mt19937 random(7);
    for (int64_t bytesPerRow = 1; bytesPerRow <= 160; ++bytesPerRow) {
        Bytes expected(static_cast<size_t>(bytesPerRow * 5 + 2));
        for (uint8_t& byte : expected)
            byte = static_cast<uint8_t>(random());
        Bytes actual = expected;
        swapByTheBook(expected.data(), 5, bytesPerRow);
        swapRedAndBlue(actual.data(), 5, bytesPerRow);
        ASSERT_EQ(actual, expected) << bytesPerRow;
    }
}

TEST(ChannelSwap, ReachesAtMostTwoBytesPastTheLastRow) {
    Bytes pixels{1, 2, 3, 4, 0xA0, 0xB0, 0xC0};
    swapRedAndBlue(pixels.data(), 1, 4);
    EXPECT_EQ(pixels, (Bytes{3, 2, 1, 0xB0, 0xA0, 4, 0xC0}));
}

TEST(ChannelSwap, NothingToDoTouchesNothing) {
    swapRedAndBlue(nullptr, 5, 5);
    uint8_t byte = 9;
    swapRedAndBlue(&byte, 0, 3);
    swapRedAndBlue(&byte, 1, 0);
    swapFirstAndThird(&byte, 0);
    EXPECT_EQ(byte, 9);
}

} // namespace
} // namespace paperline
