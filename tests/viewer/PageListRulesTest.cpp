#include "viewer/PageListRules.h"

#include <gtest/gtest.h>

#include <vector>

namespace paperline {
namespace {

TEST(DecideListing, OrdinaryPagesAreListedWithoutCounting) {
    ListingCounters counters{3, 60, 1, false};
    EXPECT_EQ(decideListing(counters, 10), ListingDecision::list);
    EXPECT_EQ(counters.highResolutionPageCount, 60);
}

TEST(DecideListing, FiftyHighResolutionPagesAreListed) {
    ListingCounters counters{0, 0, 0, true};
    EXPECT_EQ(decideListing(counters, 50), ListingDecision::list);
    EXPECT_EQ(counters.highResolutionPageCount, 50);
}

TEST(DecideListing, TheFiftyFirstTellsAndIsNotCounted) {
    ListingCounters counters{50, 50, 0, true};
    EXPECT_EQ(decideListing(counters, 51), ListingDecision::tellAndDropThem);
    EXPECT_EQ(counters.highResolutionPageCount, 50);
}

TEST(DecideListing, LaterPagesOfTheScanAreDroppedWithoutAMessage) {
    ListingCounters counters{50, 50, 1, true};
    EXPECT_EQ(decideListing(counters, 52), ListingDecision::dropNewPaths);
    EXPECT_EQ(counters.highResolutionPageCount, 50);
}

TEST(DecideListing, AfterTheMessageEvenTheFirstHighResolutionPageIsDropped) {
    ListingCounters counters{0, 0, 1, true};
    EXPECT_EQ(decideListing(counters, 1), ListingDecision::dropNewPaths);
    EXPECT_EQ(counters.highResolutionPageCount, 0);
}

TEST(DecideListing, TwoIsForGoodOnlyAtHighResolution) {
    ListingCounters high{0, 7, 2, true};
    EXPECT_EQ(decideListing(high, 5), ListingDecision::silentForGood);
    EXPECT_EQ(high.highResolutionPageCount, 7);
    ListingCounters low{0, 7, 2, false};
    EXPECT_EQ(decideListing(low, 5), ListingDecision::list);
}

TEST(PageFileKind, LooksAtTheWholePathAndForPdfFirst) {
    EXPECT_EQ(pageFileKind("/home/x/Scan.pdf"), PageFileKind::pdf);
    EXPECT_EQ(pageFileKind("/home/pdfs/Scan.jpg"), PageFileKind::pdf);
    EXPECT_EQ(pageFileKind("/home/motif/Scan.jpg"), PageFileKind::tiff);
    EXPECT_EQ(pageFileKind("/home/tif/Scan.pdf"), PageFileKind::pdf);
    EXPECT_EQ(pageFileKind("/home/x/Scan.PDF"), PageFileKind::singleImage);
    EXPECT_EQ(pageFileKind("/home/x/Scan.bmp"), PageFileKind::singleImage);
}

TEST(PageCaption, NumbersThePagesOfAFileWithSeveral) {
    EXPECT_EQ(pageCaption("Scan", 0, 1), "Scan");
    EXPECT_EQ(pageCaption("Scan", 0, 2), "Scan(1)");
    EXPECT_EQ(pageCaption("Scan", 1, 2), "Scan(2)");
}

TEST(EndOfEqualPaths, CoversOneRun) {
    const std::vector<std::string> paths{"a", "b", "b", "b", "a"};
    EXPECT_EQ(endOfEqualPaths(paths, 0), 1U);
    EXPECT_EQ(endOfEqualPaths(paths, 1), 4U);
    EXPECT_EQ(endOfEqualPaths(paths, 2), 4U);
    EXPECT_EQ(endOfEqualPaths(paths, 4), 5U);
}

using Rows = std::vector<size_t>;

TEST(NextRows, WhoGoesOnByOneRowGoesOnOrBack) {
    EXPECT_EQ(nextRows(3, 2, 6), (Rows{4, 2}));
    EXPECT_EQ(nextRows(3, 4, 6), (Rows{2, 4}));
}

TEST(NextRows, EndAtBothEndsOfTheList) {
    EXPECT_EQ(nextRows(5, 4, 6), Rows{4});
    EXPECT_EQ(nextRows(0, 1, 6), Rows{1});
    EXPECT_EQ(nextRows(0, -1, 6), Rows{1}); // the first selection of all
    EXPECT_EQ(nextRows(0, -1, 1), Rows{});
}

TEST(NextRows, NobodyKnowsAfterALeap) {
    EXPECT_EQ(nextRows(3, 3, 6), Rows{});
    EXPECT_EQ(nextRows(3, 0, 6), Rows{});
    EXPECT_EQ(nextRows(3, -1, 6), Rows{});
    EXPECT_EQ(nextRows(0, 5, 6), Rows{});
}

} // namespace
} // namespace paperline
