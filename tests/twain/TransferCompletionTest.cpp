#include "SessionFixture.h"

#include "platform/desktop/Alert.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "twain/TWAINHandler.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <unistd.h>

namespace paperline::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TransferCompletionTest : public SessionFixture {
protected:
    ScriptedSource& source() { return dsm.sources.front(); }
    void connectWithPages(std::vector<ScriptedPage> pages) {
        addSource().pages = std::move(pages);
        connect();
    }
    void connectWithGoodPages(size_t pages) {
        std::vector<ScriptedPage> good;
        for (size_t page = 0; page < pages; ++page)
            good.push_back(goodPage(grey, seedOf(page)));
        connectWithPages(std::move(good));
    }
    static uint8_t seedOf(size_t page) { return static_cast<uint8_t>(10 + page); }
    void expectSavedPage(int number, size_t page) const {
        EXPECT_EQ(readBmp(savedPath(number)).bytes, bytesOfGoodPage(grey, seedOf(page))) << number;
    }
    void expectIdle() const {
        EXPECT_EQ(controller->mScanSetup, 0);
        EXPECT_EQ(controller->currentMultiPage, 1U);
        EXPECT_TRUE(folderField.isEnabled());
        EXPECT_EQ(scansEnded, 1);
        EXPECT_FALSE(dsm.isSourceOpen());
        EXPECT_FALSE(gTWAINHandler->dsEnabled);
        EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    }
    // 16 strips of 20 MB make more than 300 MiB of copied rows.
    static ScriptedPage pageOfMuchData(int strips = 16) {
        ScriptedPage page{.info = pageInfo(5'000, 4'000, 8, 300), .strips = {}};
        for (int strip = 0; strip < strips; ++strip)
            page.strips.push_back({.yOffset = 0, .rows = 4'000, .bytesPerRow = 5'000});
        page.strips.back().code = twain::TWRC_XFERDONE;
        return page;
    }
    const TW_IMAGEINFO grey = pageInfo(10, 6, 8, 300);
};

// --- good pages ---

TEST_F(TransferCompletionTest, FetchesAPageByTheSixTriplets) {
    connectWithGoodPages(1);
    scanAtOnce();
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS",
                            "CONTROL/USERINTERFACE/ENABLEDS",
                            "IMAGE/IMAGEINFO/GET",
                            "CONTROL/SETUPMEMXFER/GET",
                            "IMAGE/IMAGEMEMXFER/GET",
                            "CONTROL/PENDINGXFERS/ENDXFER",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    expectSavedPage(1, 0);
    expectIdle();
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(TransferCompletionTest, SavesEveryPendingPageInOrder) {
    connectWithGoodPages(5);
    scanAtOnce();
    for (int page = 0; page < 5; ++page)
        expectSavedPage(page + 1, static_cast<size_t>(page));
    EXPECT_EQ(controller->currentPage, 6U);
    EXPECT_THAT(controller->imageFilePath,
                ElementsAre(savedPath(1), savedPath(2), savedPath(3), savedPath(4), savedPath(5)));
    EXPECT_EQ(dsm.count(imageInfo), 5U);
    EXPECT_EQ(dsm.count(resetXfer), 0U);
    expectIdle();
}

TEST_F(TransferCompletionTest, TakesBytesAsTheyComeAtEveryDepth) {
    for (int16_t bits : {int16_t{1}, int16_t{8}, int16_t{24}}) {
        startOver();
        const TW_IMAGEINFO info = pageInfo(13, 7, bits, 200);
        connectWithPages({goodPage(info, 3)});
        scanAtOnce();
        const BmpPixels saved = readBmp(savedPath(1));
        EXPECT_EQ(saved.widthPixels, 13);
        EXPECT_EQ(saved.heightPixels, 7);
        EXPECT_EQ(saved.bitsPerPixel, bits);
        EXPECT_EQ(saved.pixelsPerMetre, 7873);
        EXPECT_EQ(saved.bytes, bytesOfGoodPage(info, 3)) << bits;
    }
}

TEST_F(TransferCompletionTest, MarksEveryStripAtItsStart) {
    connectWithPages({goodPage(grey, 50, 2)});
    scanAtOnce();
    const std::vector<uint8_t> saved = readBmp(savedPath(1)).bytes;
    ASSERT_EQ(saved.size(), 60U);
    for (size_t strip = 0; strip < 3; ++strip) {
        EXPECT_EQ(saved[strip * 20], 0x21) << strip;
        EXPECT_EQ(saved[strip * 20 + 1], 0x85) << strip;
        EXPECT_EQ(saved[strip * 20 + 2], 0xE9) << strip;
    }
    EXPECT_EQ(saved, bytesOfGoodPage(grey, 50, 2));
}

TEST_F(TransferCompletionTest, SendsAFreshRecordWithEveryStrip) {
    connectWithPages({goodPage(grey, 1, 2)});
    scanAtOnce();
    int strips = 0;
    for (const RecordedCall& call : dsm.calls()) {
        if (call.triplet != imageMemXfer)
            continue;
        ++strips;
        const auto record = call.sentAs<TW_IMAGEMEMXFER>();
        EXPECT_EQ(record.Compression, 0xffff);
        for (uint32_t number : {record.BytesPerRow,
                                record.Columns,
                                record.Rows,
                                record.XOffset,
                                record.YOffset,
                                record.BytesWritten})
            EXPECT_EQ(number, 0xffffffffU);
        EXPECT_EQ(record.Memory.Flags, 9U);
        EXPECT_EQ(record.Memory.Length, 60U) << "the whole page";
    }
    EXPECT_EQ(strips, 3);
}

TEST_F(TransferCompletionTest, TakesPagesOfChangingKind) {
    const TW_IMAGEINFO colour = pageInfo(31, 40, 24, 150);
    const TW_IMAGEINFO lineart = pageInfo(9, 3, 1, 600);
    connectWithPages({goodPage(grey, 1), goodPage(colour, 2, 7), goodPage(lineart, 3)});
    scanAtOnce();
    EXPECT_EQ(readBmp(savedPath(1)).bytes, bytesOfGoodPage(grey, 1));
    EXPECT_EQ(readBmp(savedPath(2)).bytes, bytesOfGoodPage(colour, 2, 7));
    EXPECT_EQ(readBmp(savedPath(3)).bytes, bytesOfGoodPage(lineart, 3));
}

TEST_F(TransferCompletionTest, ReadsTheResolutionsFractionItsOwnWay) {
    TW_IMAGEINFO info = grey;
    info.XResolution = {300, 1};
    connectWithPages({goodPage(info)});
    scanAtOnce();
    EXPECT_TRUE(gHighResolutionScan);
    EXPECT_EQ(gPageHeightAt300Dpi, 5); // 6 x 300 / 301
    startOver();
    connectWithGoodPages(1);
    scanAtOnce();
    EXPECT_FALSE(gHighResolutionScan);
    EXPECT_EQ(gPageHeightAt300Dpi, 6);
}

TEST_F(TransferCompletionTest, CountsAResolutionBelowOneAsSeventyTwo) {
    for (int16_t dpi : {int16_t{0}, int16_t{-300}}) {
        startOver();
        connectWithPages({goodPage(pageInfo(10, 6, 8, dpi))});
        scanAtOnce();
        EXPECT_EQ(readBmp(savedPath(1)).pixelsPerMetre, 2834) << dpi;
    }
}

// --- how a page ends ---

TEST_F(TransferCompletionTest, SavesWhatCameBeforeATransferFailed) {
    ScriptedPage broken = goodPage(grey, 9, 2);
    broken.strips.back().code = twain::TWRC_FAILURE;
    connectWithPages({goodPage(grey, seedOf(0)), broken, goodPage(grey, seedOf(2))});
    scanAtOnce();
    expectSavedPage(1, 0);
    expectSavedPage(3, 2);
    std::vector<uint8_t> expected = bytesOfGoodPage(grey, 9, 2);
    std::fill(expected.begin() + 40, expected.end(), uint8_t{0}); // the failed strip has no rows
    EXPECT_EQ(readBmp(savedPath(2)).bytes, expected);
    expectIdle();
}

TEST_F(TransferCompletionTest, DropsACancelledPageAndGoesOn) {
    ScriptedPage cancelled = goodPage(grey, 9, 2);
    cancelled.strips.back().code = twain::TWRC_CANCEL;
    connectWithPages({goodPage(grey, seedOf(0)), cancelled, goodPage(grey, seedOf(2))});
    scanAtOnce();
    expectSavedPage(1, 0);
    expectSavedPage(2, 2);
    EXPECT_FALSE(fileExists(savedPath(3)));
    EXPECT_THAT(alerts, IsEmpty());
    expectIdle();
}

TEST_F(TransferCompletionTest, EndsQuietlyWhenTheOnlyPageIsCancelled) {
    ScriptedPage cancelled = goodPage(grey, 9);
    cancelled.strips.back().code = twain::TWRC_CANCEL;
    connectWithPages({cancelled});
    scanAtOnce();
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_EQ(controller->currentPage, 1U);
    expectIdle();
}

TEST_F(TransferCompletionTest, TakesACancelledPageForTheUsersEndAtOnce) {
    ScriptedPage cancelled = goodPage(grey, 9);
    cancelled.strips.back().code = twain::TWRC_CANCEL;
    connectWithPages({goodPage(grey, seedOf(0)), cancelled});
    std::vector<int> scanSetupAtPageEnds;
    dsm.intercept = [&](const Triplet& triplet, TW_MEMREF) {
        if (triplet == endXfer)
            scanSetupAtPageEnds.push_back(controller->mScanSetup);
        return std::optional<uint16_t>();
    };
    scanAtOnce();
    EXPECT_THAT(scanSetupAtPageEnds, ElementsAre(1, 0));
}

// --- pages that cannot be held ---

TEST_F(TransferCompletionTest, DiscardsTheRestAfterAPageItCannotHold) {
    TW_IMAGEINFO impossible = grey;
    impossible.ImageWidth = INT32_MAX;
    impossible.ImageLength = INT32_MAX;
    connectWithPages({goodPage(grey, seedOf(0)), goodPage(grey, 9), goodPage(grey, 9)});
    source().pages[1].info = impossible;
    scanAtOnce();
    expectSavedPage(1, 0);
    EXPECT_THAT(alerts, ElementsAre("ShowNoMem", "ShowNoMem")) << "at the page and at the next";
    EXPECT_EQ(dsm.count(setupMemXfer), 1U);
    EXPECT_EQ(dsm.count(endXfer), 2U);
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00001.bmp"));
    EXPECT_EQ(controller->imageFilePath.size(), 1U);
    expectIdle();
}

TEST_F(TransferCompletionTest, TakesFailedImageInformationForSuchAPage) {
    connectWithGoodPages(1);
    source().pages[0].infoCode = twain::TWRC_FAILURE;
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("ShowNoMem"));
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    expectIdle();
}

TEST_F(TransferCompletionTest, RefusesAVeryLargePageThatTheMachineHasNoRoomFor) {
    connectWithPages({goodPage(grey)});
    source().pages[0].info = pageInfo(40'000, 40'000, 8, 600);
    availableBytes = uint64_t{3} << 30U;
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("ShowNoMem"));
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS",
                            "CONTROL/USERINTERFACE/ENABLEDS",
                            "IMAGE/IMAGEINFO/GET",
                            "CONTROL/SETUPMEMXFER/GET",
                            "CONTROL/PENDINGXFERS/ENDXFER",
                            "CONTROL/PENDINGXFERS/RESET",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    expectIdle();
}

// --- pages that cannot be saved ---

TEST_F(TransferCompletionTest, StopsAtAPageThatCannotBeSaved) {
    connectWithGoodPages(3);
    controller->createFolerprofileFolderName = folder + "/nowhere";
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoSaveImage", "ShowNoMem"));
    EXPECT_EQ(dsm.count(imageMemXfer), 1U) << "the next page is not fetched";
    EXPECT_TRUE(memoryShortage) << "until the next batch";
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_EQ(controller->currentPage, 1U);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    expectIdle();
}

TEST_F(TransferCompletionTest, GoesOnAfterAPageWithoutSpace) {
    connectWithGoodPages(3);
    int asked = 0;
    host().freeSpaceBytes = [&](const std::string& volume) {
        const bool isSecondPage = volume == folder && ++asked == 2;
        return std::optional<int64_t>(isSecondPage ? 0 : INT64_MAX);
    };
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoEnoughDiskSpace"));
    expectSavedPage(1, 0);
    expectSavedPage(2, 2);
    EXPECT_EQ(dsm.count(resetXfer), 0U);
    expectIdle();
}

TEST_F(TransferCompletionTest, DiscardsNothingWhenOnlySpaceWasMissing) {
    connectWithGoodPages(2);
    host().freeSpaceBytes = [](const std::string&) { return std::optional<int64_t>(); };
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoEnoughDiskSpace", "NoEnoughDiskSpace"));
    EXPECT_EQ(dsm.count(resetXfer), 0U);
    expectIdle();
}

// Writers of pictures call a page saved whatever became of its file.
TEST_F(TransferCompletionTest, NamesThePagesThatAreOnNoDisk) {
    connectWithGoodPages(3);
    std::string named;
    setAlertPresenter([&](const Alert& alert) {
        alerts.push_back(alert.message);
        named = alert.informativeText;
        EXPECT_EQ(alert.title, " ");
        EXPECT_FALSE(dsm.isSourceOpen()) << "once, when the scan is over";
        return alertDefaultReturn;
    });
    controller->profileFileformatSelect = 1;
    int pages = 0;
    dsm.intercept = [&](const Triplet& triplet, TW_MEMREF) {
        if (triplet == imageInfo)
            controller->createFolerprofileFolderName = ++pages == 2 ? folder : folder + "/nowhere";
        return std::optional<uint16_t>();
    };
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoSaveImage"));
    EXPECT_EQ(named,
              folder + "/nowhere/Image_00001.jpg: the folder is gone\n" + folder +
                  "/nowhere/Image_00003.jpg: the folder is gone");
    EXPECT_THAT(controller->imageFilePath, ElementsAre(savedPath(2, "jpg")));
    EXPECT_EQ(dsm.count(resetXfer), 0U) << "the scan went on";
    expectIdle();
}

TEST_F(TransferCompletionTest, NamesTenSuchPagesAtTheMost) {
    connectWithGoodPages(12);
    std::string named;
    setAlertPresenter([&named](const Alert& alert) {
        named = alert.informativeText;
        return alertDefaultReturn;
    });
    controller->profileFileformatSelect = 1;
    controller->createFolerprofileFolderName = folder + "/nowhere";
    scanAtOnce();
    EXPECT_EQ(std::count(named.begin(), named.end(), '\n'), 10);
    EXPECT_TRUE(named.ends_with("/Image_00010.jpg: the folder is gone\n…")) << named;
}

TEST_F(TransferCompletionTest, SaysNothingOfPagesThatWereNotToBeSaved) {
    connectWithGoodPages(2);
    controller->profileFileformatSelect = 1;
    controller->mMenuFileSave = 0;
    host().freeSpaceBytes = [](const std::string&) { return std::optional<int64_t>(0); };
    scanAtOnce(); // not even the preview could be written
    controller->mMenuFileSave = 1;
    controller->profileFileformatSelect = 42; // no format: no file
    scanAtOnce();
    EXPECT_THAT(alerts, IsEmpty());
}

// --- sources that never end ---

TEST_F(TransferCompletionTest, EndsAPageOfStripsWithoutRows) {
    ScriptedPage endless{.info = grey, .strips = {{.yOffset = 0, .rows = 0, .bytesPerRow = 10}}};
    connectWithPages({goodPage(grey, seedOf(0)), endless, goodPage(grey, 9)});
    scanAtOnce();
    expectSavedPage(1, 0);
    EXPECT_EQ(alerts.front(), "NoSaveImage");
    EXPECT_EQ(dsm.count(imageMemXfer), 1U + 100'000U);
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00001.bmp"));
    expectIdle();
}

TEST_F(TransferCompletionTest, EndsAPageThatComesAgainAndAgain) {
    ScriptedPage endless = goodPage(grey, 9);
    endless.strips.back().code = twain::TWRC_SUCCESS;
    connectWithPages({endless});
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoSaveImage"));
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    expectIdle();
}

TEST_F(TransferCompletionTest, EndsPagesWithoutData) {
    connectWithGoodPages(1);
    source().pages.push_back({.info = grey}); // every strip fails
    source().endlessPages = true;
    scanAtOnce();
    expectSavedPage(1, 0);
    EXPECT_EQ(alerts.front(), "NoSaveImage");
    EXPECT_EQ(folderEntries(folder).size(), 10U) << "the good page and nine empty ones";
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    expectIdle();
}

TEST_F(TransferCompletionTest, SetsNoBoundToGoodPages) {
    connectWithGoodPages(1);
    source().endlessPages = true;
    int pages = 0;
    dsm.intercept = [&](const Triplet& triplet, TW_MEMREF data) -> std::optional<uint16_t> {
        if (triplet != endXfer || ++pages < 300)
            return std::nullopt;
        *static_cast<TW_PENDINGXFERS*>(data) = {};
        return twain::TWRC_SUCCESS;
    };
    scanAtOnce();
    EXPECT_EQ(folderEntries(folder).size(), 300U);
    EXPECT_EQ(controller->currentPage, 301U);
}

TEST_F(TransferCompletionTest, EndsWhenThePageCannotBeEnded) {
    connectWithGoodPages(3);
    source().pages[1].endCode = twain::TWRC_FAILURE;
    scanAtOnce();
    expectSavedPage(1, 0);
    expectSavedPage(2, 1);
    EXPECT_FALSE(fileExists(savedPath(3)));
    EXPECT_EQ(dsm.count(resetXfer), 1U) << "else the source could not be closed";
    expectIdle();
}

// --- memory guard ---

TEST_F(TransferCompletionTest, LeavesPagesOutOfTheListWhenMemoryIsLow) {
    connectWithPages({goodPage(grey, seedOf(0)), pageOfMuchData(), goodPage(grey, seedOf(2))});
    availableBytes = uint64_t{8} << 30U; // the low 32 bits are 0
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoDisplayImage"));
    EXPECT_THAT(controller->imageFilePath, ElementsAre(savedPath(1)));
    EXPECT_TRUE(fileExists(savedPath(2)));
    expectSavedPage(3, 2);
    EXPECT_FALSE(memoryShortage);
    expectIdle();
}

TEST_F(TransferCompletionTest, AddsUpWhatAllPagesOfAScanCopied) {
    connectWithPages({pageOfMuchData(8), pageOfMuchData(8), goodPage(grey, seedOf(2))});
    availableBytes = uint64_t{8} << 30U; // the low 32 bits are 0
    scanAtOnce();
    EXPECT_THAT(alerts, ElementsAre("NoDisplayImage"));
    EXPECT_THAT(controller->imageFilePath, ElementsAre(savedPath(1)));
    alerts.clear();
    gNoDisplayImageShown = 0;
    dsm.sources[0].pages = {goodPage(grey, seedOf(3))};
    scanAtOnce(); // the next scan counts anew
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_THAT(controller->imageFilePath, ElementsAre(savedPath(1), savedPath(4)));
}

TEST_F(TransferCompletionTest, TheCommandLineSaysNothingAboutPagesThatNobodySees) {
    LaunchOptions options;
    options.commandLine = true;
    controller = std::make_unique<AppDelegate>(options);
    controller->mMenuFileSave = 1;
    controller->currentPage = 1;
    controller->createFolerprofileFolderName = folder;
    controller->saveImageName = "Image";
    controller->SelectFolderAutoDetectFlag = 1;
    connectWithPages({pageOfMuchData(), goodPage(grey, seedOf(1))});
    availableBytes = uint64_t{8} << 30U; // the low 32 bits are 0
    scanAtOnce();
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_THAT(controller->imageFilePath, ElementsAre(savedPath(1), savedPath(2)));
    // It counts the pages that are on no disk itself.
    controller->profileFileformatSelect = 1;
    controller->createFolerprofileFolderName = folder + "/nowhere";
    scanAtOnce();
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(TransferCompletionTest, LooksAtMemoryOnlyBelowItsThreshold) {
    controller->TwainInit();
    availableBytes = 536'870'912;
    controller->checkmemoryEnough();
    EXPECT_FALSE(memoryShortage);
    availableBytes = 536'870'911;
    memoryShortage = true; // known already
    controller->checkmemoryEnough();
    EXPECT_THAT(alerts, IsEmpty());
    memoryShortage = false;
    controller->checkmemoryEnough();
    EXPECT_TRUE(memoryShortage);
    EXPECT_THAT(alerts, ElementsAre("NoDisplayImage"));
    memoryShortage = false;
}

TEST_F(TransferCompletionTest, ComparesMegabytesWithItsShiftedNumber) {
    availableBytes = (uint64_t{1} << 30U) - 1;
    EXPECT_EQ(controller->checkMemorySize(0), 1);
    EXPECT_EQ(controller->checkMemorySize(1), -1);
    EXPECT_THAT(alerts, ElementsAre("NoDisplayImage"));
    availableBytes += 1;
    EXPECT_EQ(controller->checkMemorySize(1), 1);
}

TEST_F(TransferCompletionTest, CountsMemoryThatCannotBeReadAsNone) {
    host().availableMemoryBytes = [] { return std::optional<uint64_t>(); };
    EXPECT_EQ(controller->get_free_memory(), 0U);
    availableBytes = 12'345;
    host().availableMemoryBytes = [this] { return std::optional(availableBytes); };
    EXPECT_EQ(controller->get_free_memory(), 12'345U);
}

// --- around the pages ---

TEST_F(TransferCompletionTest, StartsABatchWithFreshTemporaryFolders) {
    connectWithGoodPages(1);
    writeTextFile(scratchFolder() + "/MultiImage/Image_00001.jpg", "stale");
    writeTextFile(scratchFolder() + "/MultiImage_Scale/Image_00001.tif", "stale");
    writeTextFile(scratchFolder() + "/TmpImage.pdf", "stale");
    writeTextFile(scratchFolder() + "/TmpImage.tif", "stale");
    writeTextFile(scratchFolder() + "/Image_00007.tif", "listed");
    controller->changeThumbnailSelect = 1;
    multiPageTargetPath = "stale";
    firstPageOfBatch = false;
    memoryShortage = true;
    int selectedBeforeAPage = 0; // the new row's selection sets it again
    dsm.intercept = [&](const Triplet& triplet, TW_MEMREF) {
        if (triplet.type == twain::DAT_IMAGEINFO)
            selectedBeforeAPage += controller->changeThumbnailSelect;
        return std::optional<uint16_t>();
    };
    scanAtOnce();
    EXPECT_EQ(selectedBeforeAPage, 0);
    EXPECT_TRUE(folderExists(scratchFolder() + "/MultiImage"));
    EXPECT_THAT(folderEntries(scratchFolder() + "/MultiImage"), IsEmpty());
    EXPECT_THAT(folderEntries(scratchFolder() + "/MultiImage_Scale"), IsEmpty());
    EXPECT_FALSE(fileExists(scratchFolder() + "/TmpImage.pdf"));
    EXPECT_FALSE(fileExists(scratchFolder() + "/TmpImage.tif"));
    EXPECT_TRUE(fileExists(scratchFolder() + "/Image_00007.tif"));
    EXPECT_EQ(multiPageTargetPath, "");
    EXPECT_TRUE(firstPageOfBatch);
    EXPECT_EQ(controller->imageFilePath.size(), 1U);
}

TEST_F(TransferCompletionTest, MakesTheTemporaryRootAgain) {
    connectWithGoodPages(1);
    removePath(scratchFolder());
    scanAtOnce();
    EXPECT_TRUE(folderExists(scratchFolder() + "/MultiImage"));
    EXPECT_TRUE(folderExists(scratchFolder() + "/MultiImage_Scale"));
}

TEST_F(TransferCompletionTest, ListsEveryPageAndSelectsTheNewest) {
    connectWithGoodPages(3);
    scanAtOnce();
    ASSERT_EQ(controller->cellInfos.size(), 3U);
    EXPECT_EQ(controller->cellInfos[2].imageFullPath, savedPath(3));
    EXPECT_EQ(controller->_selectedRaw, 2);
}

TEST_F(TransferCompletionTest, ShowsAPreviewWithoutSavingIt) {
    connectWithGoodPages(2);
    controller->mMenuFileSave = 0;
    scanAtOnce();
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_EQ(controller->imageFilePath.size(), 1U);
    EXPECT_EQ(controller->cellInfos.size(), 1U);
    EXPECT_EQ(controller->nonFileSaveImageInTempFolder, 1);
    EXPECT_EQ(controller->_selectedRaw, -1);
    EXPECT_EQ(controller->currentPage, 1U);
    EXPECT_EQ(controller->mScanSetup, 0);
    EXPECT_EQ(scansEnded, 1);
    EXPECT_FALSE(folderField.isEnabled()) << "the save switch is off";
}

TEST_F(TransferCompletionTest, RevealsTheFolderThatPagesWentTo) {
    connectWithGoodPages(1);
    scanAtOnce();
    EXPECT_THAT(revealed, IsEmpty());
    controller->profileShowInFinder = 1;
    controller->profileFolderName = folder + "/Image";
    scanAtOnce();
    EXPECT_THAT(revealed, ElementsAre(folder));
}

TEST_F(TransferCompletionTest, RevealsTheChosenFolderWhenNoPageWentAnywhere) {
    ScriptedPage cancelled = goodPage(grey, 9);
    cancelled.strips.back().code = twain::TWRC_CANCEL;
    connectWithPages({cancelled});
    controller->SelectFolderAutoDetectFlag = 0;
    controller->profileShowInFinder = 1;
    controller->profileFolderName = folder;
    controller->createFolerprofileFolderName.clear(); // the first page sets it
    scanAtOnce();
    EXPECT_THAT(revealed, ElementsAre(folder));
}

TEST_F(TransferCompletionTest, TellsAboutEveryFileThatIsComplete) {
    connectWithGoodPages(2);
    std::vector<std::string> told;
    controller->savedFileObserver = [&](const SavedFile& file) { told.push_back(file.path); };
    scanAtOnce();
    EXPECT_THAT(told, ElementsAre(savedPath(1), savedPath(2)));
}

// --- native and file transfer ---

class OtherMechanismsTest : public TransferCompletionTest {
protected:
    std::vector<uint8_t> picture() {
        const std::string text = "P5\n2 2\n255\nabcd";
        return {text.begin(), text.end()};
    }
    void enableFor(int32_t mechanism) {
        controller->nonUI();
        controller->mNativeTransfer = mechanism;
        controller->xferReady(nullptr);
    }
};

TEST_F(OtherMechanismsTest, FetchesDecodesAndDropsNativePages) {
    connectWithPages({{.info = grey, .nativePicture = picture()},
                      {.info = grey, .nativePicture = {1, 2, 3}},
                      {.info = grey}});
    enableFor(1);
    EXPECT_EQ(dsm.count(imageInfo), 3U);
    EXPECT_EQ(dsm.count(imageNativeXfer), 3U);
    EXPECT_EQ(dsm.count(endXfer), 3U);
    EXPECT_EQ(controller->mScanSetup, 1) << "deliberately not 0";
    EXPECT_FALSE(dsm.isSourceOpen());
    EXPECT_EQ(scansEnded, 1);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_THAT(folderEntries(folder), IsEmpty());
    EXPECT_FALSE(fileExists(scratchFolder() + "/NativeImage"));
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(OtherMechanismsTest, EndsWhenANativePageCannotBeEnded) {
    connectWithPages(
        {{.info = grey, .nativePicture = picture()}, {.info = grey, .nativePicture = picture()}});
    source().pages[0].endCode = twain::TWRC_FAILURE;
    enableFor(1);
    EXPECT_EQ(dsm.count(imageNativeXfer), 1U);
    EXPECT_EQ(dsm.count(resetXfer), 1U) << "else the source could not be closed";
    EXPECT_FALSE(dsm.isSourceOpen());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(OtherMechanismsTest, EndsNativePagesWithoutData) {
    connectWithPages({{.info = grey}});
    source().endlessPages = true;
    enableFor(1);
    EXPECT_EQ(dsm.count(imageNativeXfer), 10U);
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_FALSE(dsm.isSourceOpen());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(OtherMechanismsTest, TakesAFileTransferThroughItsTriplets) {
    connectWithPages({{.info = grey}});
    const std::vector<uint8_t> bytes = picture();
    source().fileOfFileTransfer = folder + "/scanned.pnm";
    ASSERT_TRUE(writeFile(source().fileOfFileTransfer, bytes));
    controller->nonUI();
    controller->mNativeTransfer = 3;
    dsm.forgetCalls();
    controller->xferReady(nullptr);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/SETUPFILEXFER/GETDEFAULT",
                            "IMAGE/IMAGEFILEXFER/GET",
                            "CONTROL/PENDINGXFERS/ENDXFER",
                            "CONTROL/PENDINGXFERS/RESET",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    EXPECT_TRUE(fileExists(source().fileOfFileTransfer)) << "read, not removed";
    expectIdle();
}

TEST_F(OtherMechanismsTest, SurvivesAFileTransferWithoutAFile) {
    connectWithPages({{.info = grey}});
    dsm.fail(setupFileXfer, twain::TWRC_FAILURE);
    dsm.fail(imageFileXfer, twain::TWRC_FAILURE);
    enableFor(3);
    expectIdle();
}

} // namespace
} // namespace paperline::test
