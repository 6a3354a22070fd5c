#include "output/Resolution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace paperline {
namespace {

TEST(Resolution, TheFractionIsReadAsItsReciprocal) {
    EXPECT_EQ(resolutionOfFixedPoint(300, 0), 300.0F);
    EXPECT_EQ(resolutionOfFixedPoint(300, 1), 301.0F);
    EXPECT_EQ(resolutionOfFixedPoint(300, 2), 300.5F);
    EXPECT_EQ(resolutionOfFixedPoint(300, 32768), static_cast<float>(300.0 + 1.0 / 32768));
    EXPECT_EQ(resolutionOfFixedPoint(-5, 0), -5.0F);
}

TEST(Resolution, WholeDotsPerInchAreTruncated) {
    EXPECT_EQ(wholeDpi(300.99F), 300);
    EXPECT_EQ(wholeDpi(1.0F), 1);
}

TEST(Resolution, BelowOneCountsAsSeventyTwo) {
    EXPECT_EQ(wholeDpi(0.99F), 72);
    EXPECT_EQ(wholeDpi(0.0F), 72);
    EXPECT_EQ(wholeDpi(-300.0F), 72);
    EXPECT_EQ(wholeDpi(std::numeric_limits<float>::quiet_NaN()), 72);
    EXPECT_EQ(wholeDpi(std::numeric_limits<float>::infinity()), INT32_MAX);
}

TEST(Resolution, PointsOfALetterPage) {
    EXPECT_EQ(pointsOfPage(2550, 3300, 300), (Size{612, 792}));
    EXPECT_EQ(pointsOfPage(2550, 3300, 200), (Size{918, 1188}));
}

TEST(Resolution, ExactQuotientsAreNotRoundedUp) {
    EXPECT_EQ(pointsOfPage(1000, 1000, 300), (Size{240, 240}));
    EXPECT_EQ(pointsOfPage(1000, 1000, 150), (Size{480, 480}));
}

TEST(Resolution, OtherQuotientsAre) {
    EXPECT_EQ(pointsOfPage(2480, 3508, 300), (Size{596, 842})); // 595.2, 841.92
    EXPECT_EQ(pointsOfPage(1, 1, 600), (Size{1, 1}));
}

TEST(Resolution, RoundingUpHappensInSinglePrecision) {
    // 16777217 x 72 / 72 lies between two floats and becomes 16777216 before it is rounded up.
    EXPECT_EQ(pointsOfPage(16777217, 1, 72).width, 16777216.0);
}

TEST(Resolution, NoResolutionDividesByZero) {
    EXPECT_EQ(pointsOfPage(100, 200, 0), (Size{100, 200}));
    EXPECT_EQ(pointsOfPage(100, 200, -1), (Size{100, 200}));
}

TEST(Resolution, DensityFollowsFromPixelsAndPoints) {
    EXPECT_EQ(densityOfPage(2550, 3300, {612, 792}), (Density{300, 300}));
    EXPECT_NEAR(densityOfPage(2480, 3508, {596, 842}).horizontalDpi, 299.597, 0.001);
    EXPECT_EQ(densityOfPage(10, 20, {0, 0}), (Density{72, 72}));
}

} // namespace
} // namespace paperline
