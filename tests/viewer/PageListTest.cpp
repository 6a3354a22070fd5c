#include "PageWindow.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace paperline {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::StartsWith;
using Lines = std::vector<std::string>;

class PageList : public PageWindow {
protected:
    void list() { controller_.GetImageFromImageFolder(); }
};

TEST_F(PageList, ASinglePictureIsOneRowWithItsBareName) {
    const std::string path = addPicture("Image_00001.bmp");
    list();
    ASSERT_EQ(controller_.cellInfos.size(), 1U);
    const CellInfo& row = controller_.cellInfos[0];
    EXPECT_EQ(row.title, "");
    EXPECT_EQ(row.subtitle, "Image_00001");
    EXPECT_EQ(row.imageFullPath, path);
    EXPECT_EQ(row.imageIndex, 0);
    EXPECT_EQ(iNextImage, 1);
    EXPECT_TRUE(alerts_.empty());
}

TEST_F(PageList, ATwoPagePdfFileIsTwoNumberedRows) {
    writePdf(addPath(folder_.file("Scan.pdf")), {{100, 200, "1 0 0"}, {200, 100, "0 0 1"}});
    list();
    EXPECT_EQ(captions(), (Lines{"Scan(1)", "Scan(2)"}));
    EXPECT_EQ(controller_.cellInfos[0].imageIndex, 0);
    EXPECT_EQ(controller_.cellInfos[1].imageIndex, 1);
    EXPECT_GT(controller_.cellInfos[0].image.pixelColor(20, 20).red(), 200);
    EXPECT_GT(controller_.cellInfos[1].image.pixelColor(20, 20).blue(), 200);
}

TEST_F(PageList, AOnePageTiffFileIsOneRowWithTheBareName) {
    writeTiff(addPath(folder_.file("Scan.tif")), {{quarters(20, 30)}});
    list();
    EXPECT_EQ(captions(), Lines{"Scan"});
}

TEST_F(PageList, AThreePageTiffFileIsThreeRows) {
    writeTiff(addPath(folder_.file("Scan.tif")),
              {{quarters(20, 30)}, {quarters(40, 30)}, {quarters(20, 30)}});
    list();
    EXPECT_EQ(captions(), (Lines{"Scan(1)", "Scan(2)", "Scan(3)"}));
    EXPECT_EQ(controller_.cellInfos[1].imageIndex, 1);
    EXPECT_GT(controller_.cellInfos[1].image.width(), controller_.cellInfos[1].image.height());
}

TEST_F(PageList, PicturesInAFolderNamedAfterPdfAreListedAsThePicturesTheyAre) {
    std::filesystem::create_directory(folder_.file("pdf"));
    writeJpeg(addPath(folder_.file("pdf/a.jpg")), quarters(20, 30));
    writeTiff(addPath(folder_.file("pdf/b.tif")), {{quarters(20, 30)}, {quarters(20, 30)}});
    list();
    EXPECT_EQ(captions(), (Lines{"a", "b(1)", "b(2)"}));
    EXPECT_TRUE(alerts_.empty());
}

TEST_F(PageList, AFileInAFolderNamedAfterPdfIsTreatedAsPdf) {
    std::filesystem::create_directory(folder_.file("pdf"));
    writePdf(addPath(folder_.file("pdf/a.tif")), {{100, 200, "1 0 0"}, {200, 100, "0 0 1"}});
    writeText(addPath(folder_.file("pdf/b.jpg")), "neither document nor picture");
    list();
    EXPECT_EQ(captions(), (Lines{"a(1)", "a(2)"}));
    EXPECT_EQ(alerts_.size(), 1U);
}

TEST_F(PageList, APictureInAFolderNamedAfterTifIsOneRow) {
    std::filesystem::create_directory(folder_.file("motif"));
    writeJpeg(addPath(folder_.file("motif/a.jpg")), quarters(20, 30));
    list();
    EXPECT_EQ(captions(), Lines{"a"});
}

TEST_F(PageList, EqualPathsInARowListTheFileOnceAndStayInTheList) {
    const std::string path = folder_.file("Scan.pdf");
    writePdf(path, {{100, 200, "1 0 0"}, {100, 200, "0 1 0"}, {100, 200, "0 0 1"}});
    for (int page = 0; page < 3; ++page)
        addPath(path);
    addPicture("after.bmp");
    list();
    EXPECT_EQ(captions(), (Lines{"Scan(1)", "Scan(2)", "Scan(3)", "after"}));
    EXPECT_EQ(controller_.imageFilePath.size(), 4U);
    EXPECT_EQ(iNextImage, 4);
}

TEST_F(PageList, OnlyNewPathsBecomeRows) {
    addPicture("a.bmp");
    list();
    addPicture("b.bmp");
    list();
    list();
    EXPECT_EQ(captions(), (Lines{"a", "b"}));
}

TEST_F(PageList, AVanishedFileIsDroppedSilentlyAndTheNextTakesItsPlace) {
    addPicture("a.bmp");
    addPath(folder_.file("gone.bmp"));
    addPath(folder_.file("gone too.bmp"));
    const std::string last = addPicture("b.bmp");
    startTrace();
    list();
    EXPECT_EQ(captions(), (Lines{"a", "b"}));
    EXPECT_EQ(controller_.imageFilePath.size(), 2U);
    EXPECT_EQ(controller_.imageFilePath[1], last);
    EXPECT_EQ(iNextImage, 2);
    EXPECT_TRUE(alerts_.empty());
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"), ::testing::Contains("file not Exist"));
}

TEST_F(PageList, TheThumbnailIsACopyOfThePageAtThumbnailSize) {
    addPicture("a.bmp", quarters(1200, 900));
    list();
    const QImage& thumbnail = controller_.cellInfos[0].image;
    EXPECT_EQ(thumbnail.size(), QSize(192, 144));
    EXPECT_GT(thumbnail.pixelColor(20, 20).red(), 200);
    EXPECT_GT(thumbnail.pixelColor(170, 20).green(), 200);
    EXPECT_GT(thumbnail.pixelColor(20, 120).blue(), 200);
}

TEST_F(PageList, ThumbnailsOfAVeryLongListAreCoarser) {
    controller_.cellInfos.resize(999);
    addPicture("a.bmp", quarters(1200, 900));
    addPicture("b.bmp", quarters(1200, 900));
    list();
    EXPECT_EQ(controller_.cellInfos[999].image.size(), QSize(192, 144));
    EXPECT_EQ(controller_.cellInfos[1000].image.size(), QSize(128, 96));
}

TEST_F(PageList, TheScratchFileIsDeletedAfterEachPage) {
    addPicture("a.bmp");
    list();
    EXPECT_FALSE(std::filesystem::exists(scratchPath("/tmp/1.jpg")));
}

TEST_F(PageList, AnUnreadablePageStopsThePassAndDropsTheRest) {
    addPicture("a.bmp");
    writeText(addPath(folder_.file("b.bmp")), "no picture");
    addPicture("c.bmp");
    list();
    EXPECT_EQ(captions(), Lines{"a"});
    EXPECT_EQ(controller_.imageFilePath, Lines{folder_.file("a.bmp")});
    EXPECT_EQ(iNextImage, 1);
    EXPECT_EQ(gHighResolutionPageCount, 0);
    EXPECT_EQ(alerts_.size(), 1U);
    EXPECT_EQ(gNoDisplayImageShown, 1);
}

TEST_F(PageList, TheMessageComesOncePerScan) {
    for (const char* name : {"a.bmp", "b.bmp"}) {
        writeText(addPath(folder_.file(name)), "no picture");
        list();
    }
    EXPECT_EQ(alerts_.size(), 1U);
    EXPECT_TRUE(controller_.imageFilePath.empty());
}

TEST_F(PageList, RowsOfAFileWhoseLaterPageFailsStay) {
    const std::string path = addPath(folder_.file("Scan.tif"));
    writeTiff(path, {{quarters(20, 30)}, {quarters(20, 30)}});
    Bytes bytes = readBytes(path);
    // The second directory's strip begins far behind the end of the file.
    const Bytes tag{0x11, 0x01, 4, 0, 1, 0, 0, 0};
    auto strip = std::search(bytes.begin(), bytes.end(), tag.begin(), tag.end());
    strip = std::search(strip + 1, bytes.end(), tag.begin(), tag.end());
    ASSERT_NE(strip, bytes.end());
    *(strip + 11) = 0x70;
    writeBytes(path, bytes);
    list();
    EXPECT_EQ(captions(), Lines{"Scan(1)"});
    EXPECT_TRUE(controller_.imageFilePath.empty());
    EXPECT_EQ(iNextImage, 0);
    EXPECT_EQ(alerts_.size(), 1U);
}

TEST_F(PageList, AFailureAtHighResolutionAddsTheFailingIndexToTheCount) {
    gHighResolutionScan = true;
    addPicture("a.bmp");
    addPicture("b.bmp");
    writeText(addPath(folder_.file("c.bmp")), "no picture");
    list();
    EXPECT_EQ(gHighResolutionPageCount, 3 + 2); // three new paths, and the index 2
    EXPECT_EQ(iNextImage, 2);
}

TEST_F(PageList, AFullScratchDiskIsAFailure) {
    addPicture("a.bmp");
    host().freeSpaceBytes = [](const std::string&) { return std::optional<int64_t>(0); };
    startTrace();
    list();
    EXPECT_TRUE(controller_.cellInfos.empty());
    EXPECT_EQ(alerts_.size(), 1U);
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"),
                ::testing::Contains("saveAsJpegWithName_transfer failed"));
}

TEST_F(PageList, AScratchFileThatCannotBeReadBackIsAFailure) {
    addPicture("a.bmp");
    std::filesystem::remove_all(scratchRoot()); // the write fails silently
    host().freeSpaceBytes = [](const std::string&) { return std::optional(INT64_MAX); };
    startTrace();
    list();
    EXPECT_TRUE(controller_.cellInfos.empty());
    EXPECT_EQ(alerts_.size(), 1U);
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"),
                ::testing::Contains("initWithContentsOfFile continue"));
}

TEST_F(PageList, LowMemoryIsOnlyLogged) {
    addPicture("a.bmp");
    host().availableMemoryBytes = [] { return std::optional<uint64_t>(53'687'091); };
    startTrace();
    list();
    EXPECT_EQ(captions(), Lines{"a"});
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"), ::testing::Contains("freeMem < 50M"));
}

TEST_F(PageList, TheMemoryLimitLiesBetweenTwoBytes) {
    addPicture("a.bmp");
    host().availableMemoryBytes = [] { return std::optional<uint64_t>(53'687'092); };
    startTrace();
    list();
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"),
                ::testing::Not(::testing::Contains("freeMem < 50M")));
}

// --- high resolution ---

TEST_F(PageList, TheFiftyFirstHighResolutionPageIsNotListed) {
    gHighResolutionScan = true;
    const QImage picture = quarters(8, 8);
    for (int page = 1; page <= 52; ++page) {
        addPicture("p" + std::to_string(page) + ".bmp", picture);
        list();
    }
    EXPECT_EQ(controller_.cellInfos.size(), 50U);
    EXPECT_EQ(controller_.imageFilePath.size(), 50U);
    EXPECT_EQ(gHighResolutionPageCount, 50);
    EXPECT_EQ(alerts_.size(), 1U); // at the 51st; the 52nd is dropped without one
    EXPECT_TRUE(std::filesystem::exists(folder_.file("p52.bmp")));
}

TEST_F(PageList, TheNextScanTellsAgainAndOrdinaryPagesAreStillListed) {
    gHighResolutionPageCount = 50;
    gHighResolutionScan = true;
    addPicture("a.bmp");
    list();
    gNoDisplayImageShown = 0; // a new scan
    addPicture("b.bmp");
    list();
    EXPECT_EQ(alerts_.size(), 2U);
    gHighResolutionScan = false;
    addPicture("c.bmp");
    list();
    EXPECT_EQ(captions(), Lines{"c"});
    EXPECT_EQ(gHighResolutionPageCount, 50);
}

TEST_F(PageList, TwoMeansNeverAgainAndDropsNothing) {
    gNoDisplayImageShown = 2;
    gHighResolutionScan = true;
    addPicture("a.bmp");
    startTrace();
    list();
    EXPECT_TRUE(controller_.cellInfos.empty());
    EXPECT_EQ(controller_.imageFilePath.size(), 1U);
    EXPECT_EQ(iNextImage, 0);
    EXPECT_THAT(traced(),
                ElementsAre("In  1: GetImageFromImageFolder",
                            "    1: GetImageFromImageFolder : No Display Image again(>300dpi)",
                            "Out 1: GetImageFromImageFolder"));
}

// --- the trace ---

TEST_F(PageList, TracesEveryStepOfOnePage) {
    addPicture("Image_00001.bmp");
    host().availableMemoryBytes = [] { return std::optional<uint64_t>(1'000'000'000); };
    host().secondsSinceEpoch = [] { return 1'000'000'000.5; };
    startTrace();
    list();
    const std::string front = "    1: GetImageFromImageFolder :";
    EXPECT_EQ(traced().front(), "In  1: GetImageFromImageFolder");
    EXPECT_THAT(tracedTexts("GetImageFromImageFolder"),
                ElementsAre(::testing::MatchesRegex("Start Time is ..:..:..\\.500"),
                            "imageFilePath count = 1",
                            "imageFilePath count = 1",
                            "iNextImage = 0",
                            "theFileName = Image_00001",
                            "freeMem = 1000000000",
                            "CellInfo alloc In",
                            "strImageIndex = 0",
                            "CellInfo alloc Out",
                            ::testing::MatchesRegex("End Time is ..:..:..\\.500")));
    const std::vector<std::string> lines = traced();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "Out 1: GetImageFromImageFolder");
    EXPECT_THAT(lines.back(), StartsWith(front + " End Time is"));
}

// --- the rest of the operations ---

TEST_F(PageList, AnImageBufferEmptiesTheListAndKeepsOneSquareImage) {
    addPicture("a.bmp");
    list();
    controller_.cellInfoImages.push_back(quarters(4, 4));
    startTrace();
    controller_.GetImageFromImageBuffer(quarters(100, 50));
    EXPECT_TRUE(controller_.cellInfos.empty());
    ASSERT_EQ(controller_.cellInfoImages.size(), 1U);
    const QImage& image = controller_.cellInfoImages[0];
    EXPECT_EQ(image.size(), QSize(360, 360));
    EXPECT_EQ(image.pixelColor(10, 10), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(350, 350), QColor(Qt::yellow));
    EXPECT_EQ(traced(),
              (Lines{"In  1: GetImageFromImageBuffer", "Out 1: GetImageFromImageBuffer"}));
}

TEST_F(PageList, TheTwoIdleOperationsDoNothing) {
    addPicture("a.bmp");
    list();
    controller_.deleteFolderImage();
    EXPECT_EQ(controller_.addOneImageToScrollView(Image()), 1);
    EXPECT_EQ(controller_.cellInfos.size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(folder_.file("a.bmp")));
}

TEST_F(PageList, ALongPdfFileIsListedPageByPage) {
    writePdf(addPath(folder_.file("Long.pdf")),
             std::vector<PdfPage>(300, PdfPage{30, 20, "1 0 0"}));
    list();
    ASSERT_EQ(controller_.cellInfos.size(), 300U);
    EXPECT_EQ(controller_.cellInfos.back().subtitle, "Long(300)");
}

} // namespace
} // namespace paperline
