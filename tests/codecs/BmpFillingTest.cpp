// The block of a file as it fills: against the swap and the copy one after the other.
#include "codecs/bmp/BmpFilling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace paperline {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes randomPixels(const BmpPageLayout& page) {
    std::mt19937 random(11);
    // Two bytes more, for the swap that reaches past the last row.
    Bytes pixels(static_cast<size_t>(page.pixelsHigh * page.bytesPerRow + 2));
    std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<uint8_t>(random()); });
    return pixels;
}

Bytes rowsOf(const BmpBlock& block) {
    return {block.rows(), block.rows() + block.stride() * block.fileRowCount()};
}

// The file's rows and the caller's pixels afterwards, made in two whole passes.
struct Expected {
    explicit Expected(const BmpPageLayout& page) : pixels(randomPixels(page)) {
        if (page.bitsPerPixel == 24)
            swapRedAndBlue(pixels.data(), page.pixelsHigh, page.bytesPerRow);
        std::optional<BmpBlock> block = BmpBlock::allocate(page);
        if (!block)
            return;
        block->copyRowsBottomUp(pixels.data());
        rows = rowsOf(*block);
    }
    Bytes pixels, rows;
};

void expectSameAsTwoPasses(const BmpPageLayout& page) {
    const Expected expected(page);
    Bytes pixels = randomPixels(page);
    std::optional<BmpBlock> block = BmpBlock::allocate(page);
    ASSERT_TRUE(block.has_value());
    {
        BmpFilling filling(*block, pixels.data());
        filling.awaitAll();
        EXPECT_EQ(rowsOf(*block), expected.rows);
    }
    EXPECT_EQ(pixels, expected.pixels);
}

constexpr BmpPageLayout largeColourPage{1001, 1200, 24, 3003};

TEST(BmpFilling, GivesWhatTwoPassesGive) {
    expectSameAsTwoPasses({5, 7, 24, 15});
    expectSameAsTwoPasses({5, 7, 8, 5});
    expectSameAsTwoPasses({13, 9, 1, 2});
    expectSameAsTwoPasses(largeColourPage);
    expectSameAsTwoPasses({2001, 1300, 8, 2001});
    expectSameAsTwoPasses({20001, 1300, 1, 2501});
}

TEST(BmpFilling, KeepsTheOrderOfRowsThatReachOverTheirEnds) {
    expectSameAsTwoPasses({5, 7, 24, 16}); // the last swap of a row takes from the next
    expectSameAsTwoPasses({1, 3, 8, 100}); // rows longer than those of the file
    expectSameAsTwoPasses({1000, 1000, 24, 3001});
    expectSameAsTwoPasses({1000, 1000, 24, 3300});
}

TEST(BmpFilling, HasTheFirstRowsOfTheFileWhenTheyWereAwaited) {
    const Expected expected(largeColourPage);
    Bytes pixels = randomPixels(largeColourPage);
    std::optional<BmpBlock> block = BmpBlock::allocate(largeColourPage);
    ASSERT_TRUE(block.has_value());
    BmpFilling filling(*block, pixels.data());
    for (size_t end = 1; end <= expected.rows.size(); end += 99'991) {
        filling.await(end);
        ASSERT_TRUE(std::equal(block->rows(), block->rows() + end, expected.rows.begin())) << end;
    }
}

TEST(BmpFilling, EndsWithEverySwapDoneWhenNobodyAwaitsIt) {
    const Expected expected(largeColourPage);
    Bytes pixels = randomPixels(largeColourPage);
    std::optional<BmpBlock> block = BmpBlock::allocate(largeColourPage);
    ASSERT_TRUE(block.has_value());
    { const BmpFilling filling(*block, pixels.data()); }
    EXPECT_EQ(pixels, expected.pixels);
    EXPECT_EQ(rowsOf(*block), expected.rows);
}

TEST(BmpFilling, AwaitsNothingPastTheEnd) {
    Bytes pixels{1, 2, 3};
    std::optional<BmpBlock> block = BmpBlock::allocate({1, 1, 24, 3});
    ASSERT_TRUE(block.has_value());
    BmpFilling filling(*block, pixels.data());
    filling.await(1'000'000);
    EXPECT_EQ(rowsOf(*block), (Bytes{3, 2, 1, 0}));
}

} // namespace
} // namespace paperline
