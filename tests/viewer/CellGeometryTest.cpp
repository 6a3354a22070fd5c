#include "viewer/CellGeometry.h"

#include <gtest/gtest.h>

#include <cmath>

namespace paperline {
namespace {

constexpr Rect cell{10, 400, 215.75, 200.25};

TEST(ImageRect, LandscapeIs128WideAndItsHeightIsScaledFrom123) {
    const Rect rect = imageRectForBounds(cell, {3508, 2480});
    const double height = static_cast<double>(123.0F * (2480.0F / 3508.0F));
    EXPECT_EQ(rect.x, 55);
    EXPECT_EQ(rect.width, 128);
    EXPECT_EQ(rect.height, height);
    EXPECT_NEAR(rect.height, 86.9555, 0.0001);
    EXPECT_EQ(rect.y, 400 + 5 + (200 - height) / 2); // the cell's height cut to 200
}

TEST(ImageRect, SquareCountsAsLandscape) {
    const Rect rect = imageRectForBounds({0, 0, 200, 180}, {100, 100});
    EXPECT_EQ(rect, (Rect{45, 33.5, 128, 123}));
}

TEST(ImageRect, PortraitIs123HighAndCentredInTheWholeCellWidth) {
    const Rect rect = imageRectForBounds(cell, {2480, 3508});
    const double width = static_cast<double>(123.0F * (2480.0F / 3508.0F));
    EXPECT_EQ(rect.width, width);
    EXPECT_EQ(rect.height, 123);
    EXPECT_EQ(rect.x, 10 + 5 + (215 - width) / 2); // the cell's width cut to 215
    EXPECT_EQ(rect.y, 425);
}

TEST(ImageRect, RatiosAreSinglePrecision) {
    const Rect rect = imageRectForBounds({0, 0, 200, 200}, {1, 7});
    EXPECT_EQ(rect.width, static_cast<double>(123.0F * (1.0F / 7.0F)));
    EXPECT_NE(rect.width, 123.0 / 7.0);
}

TEST(ImageRect, APageWithoutPixelsIsDrawnNowhere) {
    const Rect rect = imageRectForBounds(cell, {0, 0});
    EXPECT_TRUE(std::isnan(rect.height));
    EXPECT_FALSE(isDrawable(rect));
}

TEST(ImageRect, AnExtremePageStaysFinite) {
    EXPECT_FALSE(isDrawable(imageRectForBounds(cell, {0, 7})));
    EXPECT_TRUE(isDrawable(imageRectForBounds(cell, {1, 4294967295U})));
    EXPECT_TRUE(isDrawable(imageRectForBounds(cell, {100000, 100000})));
}

TEST(TitleRect, StandsBesideTheThumbnailAndIsCutAtTheCellsEnd) {
    EXPECT_EQ(titleRectForBounds({10, 20, 200, 180}, {500, 15}), (Rect{148, 25, 62, 15}));
    EXPECT_EQ(titleRectForBounds({10, 20, 200, 180}, {30, 15}), (Rect{148, 25, 30, 15}));
    EXPECT_EQ(titleRectForBounds({10, 20, 100, 180}, {30, 15}), (Rect{148, 25, 0, 15}));
    EXPECT_EQ(titleRectForBounds({10, 20, 200, 180}, {0, 15}), (Rect{148, 25, 0, 15}));
}

TEST(SubtitleRect, IsZeroWithoutASubtitle) {
    EXPECT_EQ(subtitleRectForBounds(cell, {148, 405, 0, 15}, {55, 450, 128, 87}, 0), Rect{});
}

TEST(SubtitleRect, TwentyCharactersStartAtAThirdOfTheTitlesX) {
    const Rect rect =
        subtitleRectForBounds({0, 0, 215, 200}, {138, 5, 0, 15}, {45, 60, 128, 87}, 20);
    EXPECT_EQ(rect, (Rect{46, 153, 215 - 46, 200}));
}

TEST(SubtitleRect, EachMissingCharacterMovesItByThreePoints) {
    const Rect rect =
        subtitleRectForBounds({0, 0, 215, 200}, {138, 5, 0, 15}, {45, 60, 128, 87}, 11);
    EXPECT_EQ(rect.x, 46 + 27);
    EXPECT_EQ(rect.width, 215 - 73);
}

TEST(SubtitleRect, GoesBelowAThumbnailThatReachesIt) {
    const Rect title{138, 5, 0, 15};
    const Rect bounds{0, 0, 215, 200};
    EXPECT_EQ(subtitleRectForBounds(bounds, title, {45, 30, 128, 122.9}, 11).y, 153);
    EXPECT_EQ(subtitleRectForBounds(bounds, title, {45, 30, 128, 123}, 11).y, 171);
    EXPECT_EQ(subtitleRectForBounds(bounds, title, {45, 40, 128, 123}, 11).y, 171);
}

TEST(SubtitleRect, KeepsItsWidthWhileItIsNotRightOfTheCell) {
    const Rect rect =
        subtitleRectForBounds({100, 0, 215, 200}, {138, 5, 0, 15}, {45, 60, 128, 87}, 20);
    EXPECT_EQ(rect.x, 46);
    EXPECT_EQ(rect.width, 215);
}

TEST(SubtitleRect, TwentyOneCharactersWrapTheUnsignedDistance) {
    const Rect rect = subtitleRectForBounds(cell, {148, 405, 0, 15}, {55, 450, 128, 87}, 21);
    EXPECT_GT(rect.x, 1.8e19);
    EXPECT_LT(rect.width, 0);
    EXPECT_FALSE(isDrawable(rect));
}

} // namespace
} // namespace paperline
