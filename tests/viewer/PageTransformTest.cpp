#include "viewer/PageTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace paperline {
namespace {

constexpr PixelSize page{200, 300};

TEST(OrientationTransform, HasTheTableOfEightWithEqualResolutions) {
    const auto of = [](int orientation) { return orientationTransform(orientation, 72, 72, page); };
    EXPECT_EQ(of(1), (AffineTransform{1, 0, 0, 1, 0, 0}));
    EXPECT_EQ(of(2), (AffineTransform{-1, 0, 0, 1, 200, 0}));
    EXPECT_EQ(of(3), (AffineTransform{-1, 0, 0, -1, 200, 300}));
    EXPECT_EQ(of(4), (AffineTransform{1, 0, 0, -1, 0, 300}));
    EXPECT_EQ(of(5), (AffineTransform{0, -1, -1, 0, 300, 200}));
    EXPECT_EQ(of(6), (AffineTransform{0, -1, 1, 0, 0, 200}));
    EXPECT_EQ(of(7), (AffineTransform{0, 1, 1, 0, 0, 0}));
    EXPECT_EQ(of(8), (AffineTransform{0, 1, -1, 0, 300, 0}));
}

TEST(OrientationTransform, StretchesTheAxisWithTheLowerResolution) {
    const auto twiceAsTall = [](int orientation) {
        return orientationTransform(orientation, 200, 100, page); // Y = 2, H = 600
    };
    EXPECT_EQ(twiceAsTall(1), (AffineTransform{1, 0, 0, 2, 0, 0}));
    EXPECT_EQ(twiceAsTall(2), (AffineTransform{-1, 0, 0, 2, 200, 0}));
    EXPECT_EQ(twiceAsTall(3), (AffineTransform{-1, 0, 0, -2, 200, 600}));
    EXPECT_EQ(twiceAsTall(4), (AffineTransform{1, 0, 0, -2, 0, 600}));
    EXPECT_EQ(twiceAsTall(5), (AffineTransform{0, -1, -2, 0, 600, 200}));
    EXPECT_EQ(twiceAsTall(6), (AffineTransform{0, -1, 2, 0, 0, 200}));
    EXPECT_EQ(twiceAsTall(7), (AffineTransform{0, 1, 2, 0, 0, 0}));
    EXPECT_EQ(twiceAsTall(8), (AffineTransform{0, 1, -2, 0, 600, 0}));
    EXPECT_EQ(orientationTransform(1, 100, 200, page), (AffineTransform{2, 0, 0, 1, 0, 0}));
    EXPECT_EQ(orientationTransform(6, 100, 200, page), (AffineTransform{0, -2, 1, 0, 0, 400}));
}

TEST(OrientationTransform, StretchIsSinglePrecision) {
    const AffineTransform t = orientationTransform(3, 300, 200, {3, 1});
    EXPECT_EQ(t.d, -static_cast<double>(300.0F / 200.0F));
    const AffineTransform third = orientationTransform(3, 300, 100.1F, {1, 7});
    EXPECT_EQ(third.ty, static_cast<double>((300.0F / 100.1F) * 7.0F));
}

TEST(OrientationTransform, SixMapsTheFirstPixelToTheTopAndSwapsTheSides) {
    const AffineTransform t = orientationTransform(6, 72, 72, page);
    EXPECT_EQ(transformed(t, Point{0, 0}), (Point{0, 200}));
    EXPECT_EQ(boundingBox(t, {0, 0, 200, 300}), (Rect{0, 0, 300, 200}));
}

TEST(OrientationTransform, EveryBoundingBoxBeginsAtTheOrigin) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Rect box =
            boundingBox(orientationTransform(orientation, 300, 150, page), {0, 0, 200, 300});
        EXPECT_EQ(box.x, 0) << orientation;
        EXPECT_EQ(box.y, 0) << orientation;
        EXPECT_EQ(box.width, orientation < 5 ? 200 : 600) << orientation;
        EXPECT_EQ(box.height, orientation < 5 ? 600 : 200) << orientation;
    }
}

TEST(Properties, MissingAndSenselessResolutionsAre72) {
    EXPECT_EQ(resolutionOrDefault(std::nullopt), 72);
    EXPECT_EQ(resolutionOrDefault(0.0), 72);
    EXPECT_EQ(resolutionOrDefault(-300.0), 72);
    EXPECT_EQ(resolutionOrDefault(std::numeric_limits<double>::quiet_NaN()), 72);
    EXPECT_EQ(resolutionOrDefault(1e300), 72);
    EXPECT_EQ(resolutionOrDefault(299.9994), 299.9994F);
}

TEST(Properties, OrientationsOutsideOneToEightAreOne) {
    EXPECT_EQ(orientationOrDefault(std::nullopt), 1);
    EXPECT_EQ(orientationOrDefault(0), 1);
    EXPECT_EQ(orientationOrDefault(9), 1);
    EXPECT_EQ(orientationOrDefault(-1), 1);
    EXPECT_EQ(orientationOrDefault(int64_t{1} << 33 | 3), 1);
    for (int64_t value = 1; value <= 8; ++value)
        EXPECT_EQ(orientationOrDefault(value), value);
}

TEST(FitTransform, FillsTheViewLessTenPointsOnEverySide) {
    const AffineTransform oriented = orientationTransform(1, 72, 72, page);
    // 380 / 200 = 1.9, 280 / 300 = 0.9333 in single precision
    const AffineTransform t = fitTransform(oriented, page, {400, 300}, true);
    const auto scale = static_cast<double>(static_cast<float>(280.0 / 300.0));
    EXPECT_EQ(t, (AffineTransform{scale, 0, 0, scale, 0, 0}));
}

TEST(FitTransform, ScalesTheOffsetsToo) {
    const AffineTransform oriented = orientationTransform(3, 72, 72, page);
    const AffineTransform t = fitTransform(oriented, page, {120, 1000}, true);
    EXPECT_EQ(t, (AffineTransform{-0.5, 0, 0, -0.5, 100, 150}));
}

TEST(FitTransform, TakesTheTurnedAndStretchedSize) {
    // 200 x 300 at 200 x 100 dpi, orientation 6: 600 x 200
    const AffineTransform oriented = orientationTransform(6, 200, 100, page);
    const AffineTransform t = fitTransform(oriented, page, {320, 1000}, true);
    EXPECT_EQ(t, (AffineTransform{0, -0.5, 1, 0, 0, 100}));
}

TEST(FitTransform, ActualSizeIsOnePixelAPoint) {
    const AffineTransform oriented = orientationTransform(1, 72, 72, page);
    EXPECT_EQ(fitTransform(oriented, page, {50, 50}, false), oriented);
}

TEST(FitTransform, AViewSmallerThanItsMarginsShowsNothing) {
    const AffineTransform oriented = orientationTransform(1, 72, 72, page);
    const AffineTransform t = fitTransform(oriented, page, {15, 500}, true);
    EXPECT_EQ(placePage(t, page, {0, 0, 15, 500}).drawnSize, (Size{0, 0}));
}

TEST(PlacePage, HangsThePageBelowTheTopLeftCorner) {
    const AffineTransform oriented = orientationTransform(1, 72, 72, page);
    const PagePlacement placement = placePage(oriented, page, {0, 0, 640, 480});
    EXPECT_EQ(placement.drawnSize, (Size{200, 300}));
    EXPECT_EQ(placement.transform, (AffineTransform{1, 0, 0, 1, 5, 175}));
    EXPECT_EQ(placePage(oriented, page, {7, 9, 640, 480}).transform,
              (AffineTransform{1, 0, 0, 1, 12, 184}));
}

TEST(PlacePage, APageTallerThanTheViewStartsBelowItsLowerEdge) {
    const AffineTransform oriented = orientationTransform(1, 72, 72, page);
    EXPECT_EQ(placePage(oriented, page, {0, 0, 640, 100}).transform.ty, -205);
}

TEST(ActualSizeFrame, ASmallPageKeepsTheScrollViewsFrame) {
    const ActualSizeFrame result = actualSizeFrame({216, 3, 800, 600}, {800, 600});
    EXPECT_EQ(result.frame, (Rect{216, 3, 800, 600}));
    EXPECT_FALSE(result.verticalScroller);
    EXPECT_FALSE(result.horizontalScroller);
}

TEST(ActualSizeFrame, ATallPageGetsItsHeightAndTenAndTheVerticalScroller) {
    const ActualSizeFrame result = actualSizeFrame({216, 3, 800, 600}, {700, 601});
    EXPECT_EQ(result.frame, (Rect{216, 3, 800, 611}));
    EXPECT_TRUE(result.verticalScroller);
    EXPECT_FALSE(result.horizontalScroller);
}

TEST(ActualSizeFrame, AWidePageGetsItsWidthAndFifteenAndTheHorizontalScroller) {
    const ActualSizeFrame result = actualSizeFrame({216, 3, 800, 600}, {801, 600});
    EXPECT_EQ(result.frame, (Rect{216, 3, 816, 600}));
    EXPECT_FALSE(result.verticalScroller);
    EXPECT_TRUE(result.horizontalScroller);
}

TEST(ActualSizeFrame, GrowsBothWays) {
    const ActualSizeFrame result = actualSizeFrame({0, 0, 800, 600}, {2480, 3508});
    EXPECT_EQ(result.frame, (Rect{0, 0, 2495, 3518}));
    EXPECT_TRUE(result.verticalScroller);
    EXPECT_TRUE(result.horizontalScroller);
}

} // namespace
} // namespace paperline
