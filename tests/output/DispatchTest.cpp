// Names, counter, formats and the list of saved paths, through the controller's own operation.
#include "OutputFixture.h"

#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace paperline {
namespace {

using Dispatch = OutputTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(Dispatch, TheFirstPageIsNumberOneAndTheCounterMovesOn) {
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(fileExists(inFolder("Image_00001.jpg")));
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00001.jpg")));
    EXPECT_EQ(controller->currentPage, 2U);
}

TEST_F(Dispatch, ThePagesNameIsToldOnTheConsole) {
    touch(inFolder("Image_00001.jpg"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "createFolerprofileFolderName = " + folder +
                  "\nsaveImageName = Image\nsaveFileName = " + inFolder("Image_00001") +
                  "\nsaveFileName = " + inFolder("Image_00002") + "\n");
}

TEST_F(Dispatch, TakenNumbersAreSkipped) {
    touch(inFolder("Image_00001.jpg"));
    touch(inFolder("Image_00002.jpg"));
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00003.jpg")));
    EXPECT_EQ(controller->currentPage, 4U);
    EXPECT_EQ(textOf(inFolder("Image_00001.jpg")), "x");
}

TEST_F(Dispatch, AnotherFormatsFileIsNoCollision) {
    touch(inFolder("Image_00001.pdf"));
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(fileExists(inFolder("Image_00001.jpg")));
}

TEST_F(Dispatch, TheNumberWidensBeyondFiveDigits) {
    controller->currentPage = 123456;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(fileExists(inFolder("Image_123456.jpg")));
}

TEST_F(Dispatch, EveryPageOfABatchIsTestedForCollisions) {
    touch(inFolder("Image_00002.jpg"));
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath,
                ElementsAre(inFolder("Image_00001.jpg"), inFolder("Image_00003.jpg")));
    EXPECT_TRUE(firstPageOfBatch);
}

TEST_F(Dispatch, ANameTakenBetweenSearchAndWriteIsACollision) {
    // A link that leads nowhere does not exist for the search but stands in the way of the write.
    ASSERT_EQ(symlink("/nowhere/at/all", inFolder("Image_00001.bmp").c_str()), 0);
    controller->profileFileformatSelect = formatBmp;
    EXPECT_EQ(save(makeTestPage(1, 1, 24, {1, 2, 3})), 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00002.bmp")));
    EXPECT_EQ(controller->currentPage, 3U);
    const Bytes file = readFile(inFolder("Image_00002.bmp")).value_or(Bytes{});
    ASSERT_EQ(file.size(), 58U);
    EXPECT_THAT(Bytes(file.begin() + 54, file.end()), ElementsAre(3, 2, 1, 0));
    ASSERT_EQ(saved.size(), 1U);
    EXPECT_EQ(saved[0].path, inFolder("Image_00002.bmp"));
}

TEST_F(Dispatch, ABmpPageIsWrittenByItsOwnWriterAndItsBufferStaysSwapped) {
    controller->profileFileformatSelect = formatBmp;
    TestPage page = makeTestPage(2, 1, 24, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(save(page), 0);
    const Bytes file = readFile(inFolder("Image_00001.bmp")).value_or(Bytes{});
    ASSERT_EQ(file.size(), 54U + 8U);
    EXPECT_EQ(file[2], 54 + 54 + 8); // the size counts the header twice
    EXPECT_THAT(Bytes(file.begin() + 54, file.end()), ElementsAre(3, 2, 1, 6, 5, 4, 0, 0));
    EXPECT_THAT(page.representation->bitmapData(), ElementsAre(3, 2, 1, 6, 5, 4));
}

TEST_F(Dispatch, BmpTakesItsVerticalResolutionFromTheArgument) {
    controller->profileFileformatSelect = formatBmp;
    TestPage page = makeTestPage(1, 1, 8);
    page.info.XResolution = {200, 0};
    EXPECT_EQ(controller->saveXferDatatoMedia(*page.representation,
                                              page.image,
                                              page.representation->bitmapData().data(),
                                              600.0F,
                                              100.9F,
                                              page.info,
                                              1),
              0);
    const Bytes file = readFile(inFolder("Image_00001.bmp")).value_or(Bytes{});
    ASSERT_GT(file.size(), 46U);
    EXPECT_EQ(file[38] | file[39] << 8, 7873); // 200, from the record
    EXPECT_EQ(file[42] | file[43] << 8, 3936); // 100, from the argument
}

TEST_F(Dispatch, PicturesTakeBothResolutionsFromTheRecordsHorizontalOne) {
    std::vector<Density> seen;
    pageCodecs().jpeg = pageCodecs().png = pageCodecs().gif =
        pageCodecs().tiff = [&seen](const BitmapImageRep&, Density density) {
            seen.push_back(density);
            return Bytes{1};
        };
    TestPage page = makeTestPage(200, 100, 8);
    page.info.XResolution = {200, 0};
    page.info.YResolution = {100, 0};
    for (const int32_t code : {formatJpeg, formatGif, formatTiff, formatPng}) {
        controller->profileFileformatSelect = code;
        EXPECT_EQ(controller->saveXferDatatoMedia(*page.representation,
                                                  page.image,
                                                  page.representation->bitmapData().data(),
                                                  600.0F,
                                                  100.0F,
                                                  page.info,
                                                  200),
                  0);
    }
    EXPECT_THAT(seen, testing::SizeIs(4));
    EXPECT_THAT(seen, testing::Each(Density{200, 200}));
}

TEST_F(Dispatch, AnUnknownCodeWritesNothingAndCountsAsSaved) {
    controller->profileFileformatSelect = 42;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00001")));
    EXPECT_EQ(controller->currentPage, 2U);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(Dispatch, AFormatWithoutACodecIsNotSaved) {
    pageCodecs() = {};
    for (int32_t code = formatJpeg; code <= formatPng; ++code) {
        controller->profileFileformatSelect = code;
        firstPageOfBatch = true;
        EXPECT_EQ(saveGrey(), -1) << code;
    }
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_EQ(controller->currentPage, 1U);
}

TEST_F(Dispatch, TooLittleSpaceSavesNothing) {
    freeBytes = 10;
    EXPECT_EQ(saveGrey(), -2);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_EQ(controller->currentPage, 1U);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(Dispatch, ABmpBufferIsSwappedEvenWhenTheSpaceTestFails) {
    freeBytes = 0;
    controller->profileFileformatSelect = formatBmp;
    TestPage page = makeTestPage(1, 1, 24, {1, 2, 3});
    EXPECT_EQ(save(page), -2);
    EXPECT_THAT(page.representation->bitmapData(), ElementsAre(3, 2, 1));
}

TEST_F(Dispatch, AnUnreadableVolumeHasNoSpace) {
    freeBytes = std::nullopt;
    EXPECT_EQ(saveGrey(), -2);
    EXPECT_EQ(controller->checkFreeDiskSpace(1, folder), -1);
    EXPECT_EQ(controller->checkFreeDiskSpace(0, folder), 1);
}

TEST_F(Dispatch, ExactlyEnoughSpaceIsEnough) {
    freeBytes = 1000;
    EXPECT_EQ(controller->checkFreeDiskSpace(1000, folder), 1);
    EXPECT_EQ(controller->checkFreeDiskSpace(1001, folder), -1);
}

TEST_F(Dispatch, AVanishedFolderLosesAJpegSilentlyButReportsNoFile) {
    gBrandNumber = 2; // puts the scanner's name into its files
    int patched = 0;
    pageCodecs().setMakeAndModel = [&patched](const std::string&,
                                              const std::string&,
                                              const std::string&) { return ++patched > 0; };
    controller->profileFolderName = inFolder("gone");
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_EQ(patched, 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("gone/Image_00001.jpg")));
    EXPECT_THAT(saved, IsEmpty());
    EXPECT_FALSE(fileExists(inFolder("gone")));
}

TEST_F(Dispatch, AVanishedFolderIsAnErrorOfTheBmpWriter) {
    controller->profileFolderName = inFolder("gone");
    controller->profileFileformatSelect = formatBmp;
    testing::internal::CaptureStdout();
    EXPECT_EQ(saveGrey(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "writebmp: file open error\n");
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
}

TEST_F(Dispatch, TheSaveFolderIsTakenAfreshUnlessItWasDetected) {
    ASSERT_TRUE(createFolder(inFolder("own")));
    controller->createFolerprofileFolderName = inFolder("own");
    controller->SelectFolderAutoDetectFlag = 1;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(fileExists(inFolder("own/Image_00001.jpg")));
    controller->SelectFolderAutoDetectFlag = 0;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_TRUE(fileExists(inFolder("Image_00002.jpg")));
    EXPECT_EQ(controller->createFolerprofileFolderName, folder);
}

TEST_F(Dispatch, DuringAMemoryShortagePathsAreNotListed) {
    memoryShortage = true;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_EQ(controller->currentPage, 2U);
    EXPECT_TRUE(fileExists(inFolder("Image_00001.jpg")));
}

TEST_F(Dispatch, TheObserverLearnsWhatIsCompleteOnDisk) {
    TestPage page = makeTestPage(5, 3, 24);
    page.info.XResolution = {200, 0};
    EXPECT_EQ(save(page), 0);
    ASSERT_EQ(saved.size(), 1U);
    EXPECT_EQ(saved[0].path, inFolder("Image_00001.jpg"));
    EXPECT_EQ(saved[0].fileFormat, formatJpeg);
    EXPECT_EQ(saved[0].widthPixels, 5);
    EXPECT_EQ(saved[0].heightPixels, 3);
    EXPECT_EQ(saved[0].bitsPerPixel, 24);
    EXPECT_EQ(saved[0].resolutionDpi, 200.0);
    EXPECT_EQ(saved[0].pages, 1);
}

TEST_F(Dispatch, APreviewTakesThePlaceOfThePreviewBefore) {
    controller->mMenuFileSave = 0;
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(scratchPath(previewName)));
    EXPECT_EQ(controller->cellInfos.size(), 1U);
    EXPECT_EQ(controller->currentPage, 1U);
    EXPECT_EQ(controller->_selectedRaw, -1);
    EXPECT_NE(controller->nonFileSaveImageInTempFolder, 0);
    EXPECT_TRUE(fileExists(scratchPath(previewName)));
    EXPECT_THAT(saved, IsEmpty());
    EXPECT_THAT(folderEntries(folder), IsEmpty());
}

TEST_F(Dispatch, ASavedPageRemovesThePreviewWithItsRow) {
    controller->mMenuFileSave = 0;
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    controller->mMenuFileSave = 1;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath, ElementsAre(inFolder("Image_00001.jpg")));
    EXPECT_THAT(controller->cellInfos, IsEmpty());
    EXPECT_EQ(iNextImage, 0);
    EXPECT_EQ(controller->nonFileSaveImageInTempFolder, 0);
}

TEST_F(Dispatch, APreviewThatCannotBeWrittenIsNotReported) {
    controller->mMenuFileSave = 0;
    freeBytes = 0;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Dispatch, APreviewThatCannotBeWrittenLeavesTheListedPagesAlone) {
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    controller->GetImageFromImageFolder();
    ASSERT_THAT(controller->cellInfos, SizeIs(1));
    controller->mMenuFileSave = 0;
    host().freeSpaceBytes = [this](const std::string& volume) {
        return std::optional<int64_t>(volume == folder ? 0 : INT64_MAX);
    };
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_EQ(controller->nonFileSaveImageInTempFolder, 0);
    host().freeSpaceBytes = [](const std::string&) { return std::optional(INT64_MAX); };
    controller->mMenuFileSave = 1;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath,
                ElementsAre(inFolder("Image_00001.jpg"), inFolder("Image_00002.jpg")));
    EXPECT_THAT(controller->cellInfos, SizeIs(1));
}

TEST_F(Dispatch, APreviewThatCannotBeWrittenShowsNoEarlierPage) {
    controller->mMenuFileSave = 0;
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    host().freeSpaceBytes = [this](const std::string& volume) {
        return std::optional<int64_t>(volume == folder ? 0 : INT64_MAX);
    };
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_THAT(controller->cellInfos, IsEmpty());
    EXPECT_FALSE(fileExists(scratchPath(previewName)));
}

TEST_F(Dispatch, APreviewAfterTooManyPagesOfHighResolutionLeavesTheListedPagesAlone) {
    EXPECT_EQ(save(makeTestPage(40, 40, 8)), 0);
    controller->GetImageFromImageFolder();
    gHighResolutionScan = true;
    gHighResolutionPageCount = 50;
    controller->mMenuFileSave = 0;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(alerts, SizeIs(1)) << "the page cannot be shown";
    gHighResolutionScan = false;
    gHighResolutionPageCount = 0;
    gNoDisplayImageShown = 0;
    controller->mMenuFileSave = 1;
    EXPECT_EQ(saveGrey(), 0);
    EXPECT_THAT(controller->imageFilePath,
                ElementsAre(inFolder("Image_00001.jpg"), inFolder("Image_00002.jpg")));
    EXPECT_THAT(controller->cellInfos, SizeIs(1));
}

TEST_F(Dispatch, AResolutionBelowOneCountsAs72) {
    TestPage page = makeTestPage(16, 16, 8);
    page.info.XResolution = {0, 0};
    EXPECT_EQ(save(page), 0);
    const Bytes file = readFile(inFolder("Image_00001.jpg")).value_or(Bytes{});
    ASSERT_GT(file.size(), 18U);
    EXPECT_EQ(file[14] << 8 | file[15], 72);
}

TEST_F(Dispatch, TheTemplateIsExpandedByTheHostsClockAndLocale) {
    // 31 December 2026, noon in Greenwich: in week 1 of 2027 by American weeks, 53 of 2026 by
    // German ones.
    host().secondsSinceEpoch = [] { return 1798718400.0; };
    host().localeIdentifier = [] { return std::string("en_US"); };
    controller->saveImageName = "%YYYYMMDD_%HHNNSS";
    controller->updateDateTimeInfo2();
    EXPECT_EQ(controller->saveImageName, "20271231_%HHNNSS");
    host().localeIdentifier = [] { return std::string("de_DE"); };
    controller->saveImageName = "%YYYYMMDD";
    controller->updateDateTimeInfo();
    EXPECT_EQ(controller->saveImageName, "20261231");
    EXPECT_TRUE(controller->Contains("%YYYY", "%yyyy_scan"));
}

} // namespace
} // namespace paperline
