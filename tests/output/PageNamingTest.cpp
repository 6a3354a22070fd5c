#include "output/PageNaming.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace paperline {
namespace {

const PageNamePattern jpegPattern{"/Users/x/Scans", "Image", ".jpg", false};

NameSearch among(std::set<std::string> taken) {
    return {.testCollisions = true,
            .fileExists = [taken = std::move(taken)](
                              const std::string& path) { return taken.contains(path); },
            .announce = {}};
}

TEST(PageNaming, TheFirstPageIsNumberOne) {
    const PageName name = findPageName(jpegPattern, 1, among({}));
    EXPECT_EQ(name.base, "/Users/x/Scans/Image_00001");
    EXPECT_EQ(name.path, "/Users/x/Scans/Image_00001.jpg");
    EXPECT_EQ(name.counter, 1U);
}

TEST(PageNaming, TakenNumbersAreSkipped) {
    const PageName name =
        findPageName(jpegPattern,
                     1,
                     among({"/Users/x/Scans/Image_00001.jpg", "/Users/x/Scans/Image_00002.jpg"}));
    EXPECT_EQ(name.path, "/Users/x/Scans/Image_00003.jpg");
    EXPECT_EQ(name.counter, 3U);
}

TEST(PageNaming, AnotherExtensionIsNoCollision) {
    const PageName name = findPageName(jpegPattern, 1, among({"/Users/x/Scans/Image_00001.pdf"}));
    EXPECT_EQ(name.counter, 1U);
}

TEST(PageNaming, AGapBelowTheCounterIsNotFilled) {
    EXPECT_EQ(findPageName(jpegPattern, 4, among({})).path, "/Users/x/Scans/Image_00004.jpg");
}

TEST(PageNaming, TheFieldWidensBeyondFiveDigits) {
    EXPECT_EQ(findPageName(jpegPattern, 123456, among({})).path, "/Users/x/Scans/Image_123456.jpg");
    EXPECT_EQ(pageBasePath(jpegPattern, 99999), "/Users/x/Scans/Image_99999");
}

TEST(PageNaming, LaterPagesOfAMultiPageFileKeepItsNumber) {
    NameSearch search = among({"/s/Image_00007.pdf"});
    search.testCollisions = false;
    const PageName name = findPageName({"/s", "Image", ".pdf", true}, 7, search);
    EXPECT_EQ(name.path, "/s/Image_00007.pdf");
    EXPECT_EQ(name.counter, 7U);
}

TEST(PageNaming, EveryCandidateIsAnnounced) {
    std::vector<std::string> announced;
    NameSearch search = among({"/s/a_00001.tif"});
    search.announce = [&announced](const std::string& base) { announced.push_back(base); };
    (void)findPageName({"/s", "a", ".tif", false}, 1, search);
    EXPECT_EQ(announced, (std::vector<std::string>{"/s/a_00001", "/s/a_00002"}));
}

TEST(PageNaming, AnUnknownFormatHasNoExtension) {
    EXPECT_EQ(findPageName({"/s", "a", "", false}, 5, among({})).path, "/s/a_00005");
}

TEST(PageNaming, StagedPagesCountInFiveDigits) {
    EXPECT_EQ(stagedPageName(1, ".jpg"), "/Image_00001.jpg");
    EXPECT_EQ(stagedPageName(100000, ".tif"), "/Image_100000.tif");
}

TEST(PageNaming, AnEmptyPrefixAndASlashAtTheFoldersEndAreTakenAsTheyAre) {
    EXPECT_EQ(pageBasePath({"/s/", "", ".jpg", false}, 1), "/s//_00001");
}

} // namespace
} // namespace paperline
