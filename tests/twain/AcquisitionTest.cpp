#include "SessionFixture.h"

#include "controller/SettingsState.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/host/Host.h"
#include "twain/TWAINHandler.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <unistd.h>

namespace paperline::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AcquisitionTest : public SessionFixture {
protected:
    void connectWithPages(size_t pages, int16_t bitsPerPixel = 8) {
        ScriptedSource& source = addSource();
        for (size_t page = 0; page < pages; ++page)
            source.pages.push_back(goodPage(pageInfo(10, 4, bitsPerPixel, 300)));
        connect();
    }
    void expectIdle() const {
        EXPECT_EQ(controller->mScanSetup, 0);
        EXPECT_EQ(controller->currentMultiPage, 1U);
        EXPECT_TRUE(folderField.isEnabled()) << "the controls are enabled";
        EXPECT_FALSE(dsm.isSourceOpen());
        EXPECT_FALSE(gTWAINHandler->dsOpen);
        EXPECT_FALSE(gTWAINHandler->dsEnabled);
    }
};

// --- folder and template ---

TEST_F(AcquisitionTest, FillsAnEmptyFieldFromTheStoredFolder) {
    connectWithPages(0);
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(folderField.folderText(), folder + "/Image");
    EXPECT_EQ(controller->profileFolderName, folder + "/Image");
}

TEST_F(AcquisitionTest, TakesTheFolderFromTheField) {
    connectWithPages(0);
    folderField.setFolderText(folder + "/Letters/Page");
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(controller->profileFolderName, folder + "/Letters/Page");
    EXPECT_EQ(controller->createFolerprofileFolderName, folder + "/Letters");
    EXPECT_EQ(controller->saveImageName, "Page");
    EXPECT_TRUE(folderExists(folder + "/Letters/Page")) << "the whole text becomes a folder";
}

TEST_F(AcquisitionTest, CountsATextThatIsNoAbsolutePathFromTheHomeFolder) {
    connectWithPages(0);
    host().homeFolder = [this] { return folder; };
    const std::filesystem::path before = std::filesystem::current_path();
    const std::string startedIn = folder + "/where the program was started";
    ASSERT_TRUE(createFolder(startedIn));
    std::filesystem::current_path(startedIn);
    for (const char* text : {"~/Letters/Page", "Letters/Page"}) {
        folderField.setText(text);
        controller->toolBarItemScan(nullptr);
        EXPECT_EQ(controller->createFolerprofileFolderName, folder + "/Letters") << text;
        EXPECT_EQ(controller->saveImageName, "Page");
        EXPECT_EQ(controller->profileFolderName, folder + "/Letters/Page");
        EXPECT_EQ(folderField.folderText(), folder + "/Letters/Page") << "the field shows where";
        controller->closeRequest(nullptr);
    }
    std::filesystem::current_path(before);
    EXPECT_THAT(folderEntries(startedIn), IsEmpty());
}

TEST_F(AcquisitionTest, ExpandsTheTemplateOnce) {
    connectWithPages(0);
    host().secondsSinceEpoch = [] { return 1768560000.0; }; // 16 January 2026
    host().localeIdentifier = [] { return std::string("de_DE"); };
    folderField.setFolderText(folder + "/Page_%YYYY_%MM");
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(controller->saveImageName, "Page_2026_%MM");
    EXPECT_TRUE(folderExists(folder + "/Page_%YYYY_%MM")) << "created as typed";
}

TEST_F(AcquisitionTest, TakesATextThatEndsInASlashAsAFolder) {
    connectWithPages(0);
    folderField.setFolderText(folder + "/Deep/Down/");
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(controller->saveImageName, "");
    EXPECT_EQ(controller->createFolerprofileFolderName, folder + "/Deep/Down/");
    EXPECT_TRUE(folderExists(folder + "/Deep/Down"));
}

TEST_F(AcquisitionTest, GoesOnWhenTheFolderCannotBeCreated) {
    connectWithPages(0);
    writeTextFile(folder + "/file", "in the way");
    folderField.setFolderText(folder + "/file/Image");
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(folderField.folderText(), folder + "/file/Image");
    EXPECT_EQ(dsm.count(enableDs), 1U);
}

TEST_F(AcquisitionTest, StopsAtAFolderThatIsNotWritable) {
    connectWithPages(1);
    controller->SelectFolderAutoDetectFlag = 0;
    folderField.setFolderText(folder + "/nowhere");
    controller->toolBarItemScan(nullptr);
    EXPECT_THAT(alerts, ElementsAre("NotCorrectFolder"));
    EXPECT_THAT(dsm.calls(), IsEmpty());
    EXPECT_EQ(scansEnded, 1);
    expectIdle();
}

TEST_F(AcquisitionTest, ReadsTheTemplateWhenAutoDetectIsOff) {
    connectWithPages(0);
    controller->SelectFolderAutoDetectFlag = 0;
    controller->saveImageName = "Old";
    folderField.setFolderText(folder);
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(controller->saveImageName, "Image");
    EXPECT_EQ(dsm.count(enableDs), 1U);
}

TEST_F(AcquisitionTest, LetsTheDisplayMessageAppearAgainInEveryScan) {
    connectWithPages(0);
    gNoDisplayImageShown = 1;
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(gNoDisplayImageShown, 0);
    gNoDisplayImageShown = 2;
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(gNoDisplayImageShown, 2);
}

// --- scan ---

TEST_F(AcquisitionTest, EnablesTheSourceWithoutItsInterface) {
    connectWithPages(1);
    controller->toolBarItemScan(nullptr);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS", "CONTROL/USERINTERFACE/ENABLEDS"));
    const auto record = dsm.last(enableDs)->sentAs<TW_USERINTERFACE>();
    EXPECT_EQ(record.ShowUI, 0);
    EXPECT_EQ(record.ModalUI, 0);
    EXPECT_EQ(record.hParent, nullptr);
    EXPECT_EQ(controller->mNativeTransfer, 2);
    EXPECT_EQ(controller->mScanSetup, 1);
    EXPECT_FALSE(folderField.isEnabled());
    ASSERT_TRUE(runUntilScanEnds());
    expectIdle();
    EXPECT_TRUE(fileExists(savedPath(1)));
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(AcquisitionTest, ScansAgainAfterAScan) {
    connectWithPages(1);
    for (int scan = 1; scan <= 3; ++scan) {
        controller->toolBarItemScan(nullptr);
        ASSERT_TRUE(runUntilScanEnds());
        EXPECT_TRUE(fileExists(savedPath(scan)));
    }
    EXPECT_EQ(controller->currentPage, 4U);
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(AcquisitionTest, TellsTheUserOnceThatTheSourceDoesNotOpen) {
    connectWithPages(1);
    dsm.fail(openDs, twain::TWRC_SCANNERLOCKED);
    controller->mScanSetup = 1;
    EXPECT_EQ(controller->nonUI(), twain::TWRC_SCANNERLOCKED);
    EXPECT_EQ(alerts.size(), 1U);
    EXPECT_EQ(dsm.count(closeDs), 0U);
    EXPECT_EQ(scansEnded, 1);
    expectIdle();
}

TEST_F(AcquisitionTest, ClosesASourceThatCannotBeEnabled) {
    connectWithPages(1);
    dsm.fail(enableDs, twain::TWRC_FAILURE);
    controller->mScanSetup = 1;
    EXPECT_EQ(controller->nonUI(), 0) << "also after a failed enable";
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS",
                            "CONTROL/USERINTERFACE/ENABLEDS",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    EXPECT_EQ(alerts.size(), 1U);
    expectIdle();
}

TEST_F(AcquisitionTest, SaysNothingWhenTheUserCancelsTheEnabling) {
    connectWithPages(1);
    dsm.fail(enableDs, twain::TWRC_CANCEL);
    controller->nonUI();
    EXPECT_THAT(alerts, IsEmpty());
    expectIdle();
}

TEST_F(AcquisitionTest, ReportsASourceThatVanishedSinceItsSelection) {
    connectWithPages(1);
    dsm.sources.clear();
    controller->toolBarItemScan(nullptr);
    EXPECT_EQ(alerts.size(), 1U);
    expectIdle();
}

// --- the source's own dialog ---

TEST_F(AcquisitionTest, RecordsTheMechanismAndShowsTheSourcesDialog) {
    connectWithPages(0);
    const struct {
        uint16_t (AppDelegate::*operation)();
        int32_t mechanism;
    } table[]{{&AppDelegate::aquireNativeXfer, 1},
              {&AppDelegate::aquireMemoryXfer, 2},
              {&AppDelegate::aquireFileXfer, 3}};
    for (const auto& row : table) {
        dsm.forgetCalls();
        controller->settingsDialogOpen = true; // as if an earlier dialog had never ended
        EXPECT_EQ(((*controller).*row.operation)(), 0);
        EXPECT_FALSE(controller->settingsDialogOpen);
        EXPECT_EQ(controller->mNativeTransfer, row.mechanism);
        EXPECT_THAT(dsm.names(),
                    ElementsAre("CONTROL/IDENTITY/OPENDS", "CONTROL/USERINTERFACE/ENABLEDS"));
        EXPECT_EQ(dsm.last(enableDs)->sentAs<TW_USERINTERFACE>().ShowUI, 1);
        EXPECT_EQ(dsm.last(enableDs)->sentAs<TW_USERINTERFACE>().ModalUI, 0);
        controller->closeRequest(nullptr);
        expectIdle();
    }
}

TEST_F(AcquisitionTest, ReachesIdleWhenTheDialogCannotBeShown) {
    connectWithPages(1);
    dsm.fail(enableDs, twain::TWRC_FAILURE, 0);
    EXPECT_EQ(controller->aquireMemoryXfer(), twain::TWRC_FAILURE);
    EXPECT_EQ(dsm.count(closeDs), 1U);
    expectIdle();
    dsm.fail(openDs, twain::TWRC_FAILURE);
    EXPECT_EQ(controller->aquireFileXfer(), twain::TWRC_FAILURE);
    EXPECT_EQ(dsm.count(closeDs), 1U) << "it was not opened";
    expectIdle();
}

TEST_F(AcquisitionTest, KeepsTheControlsDisabledWhileTheSettingsDialogIsOpen) {
    connectWithPages(0);
    controller->toolBarItemSetup(nullptr);
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS", "CONTROL/USERINTERFACE/ENABLEDSUIONLY"));
    EXPECT_EQ(dsm.last(enableDsUiOnly)->sentAs<TW_USERINTERFACE>().ShowUI, 1);
    EXPECT_EQ(controller->mScanSetup, 1);
    EXPECT_FALSE(folderField.isEnabled());
    EXPECT_EQ(scansEnded, 0);
}

TEST_F(AcquisitionTest, ClosesTheSettingsDialogOnBothMessages) {
    connectWithPages(0);
    for (uint16_t message : {twain::MSG_CLOSEDSOK, twain::MSG_CLOSEDSREQ}) {
        dsm.sources[0].setupAnswer = message;
        dsm.forgetCalls();
        controller->toolBarItemSetup(nullptr);
        ASSERT_TRUE(runUntilScanEnds()) << message;
        EXPECT_THAT(dsm.names(),
                    ElementsAre("CONTROL/IDENTITY/OPENDS",
                                "CONTROL/USERINTERFACE/ENABLEDSUIONLY",
                                "CONTROL/USERINTERFACE/DISABLEDS",
                                "CONTROL/IDENTITY/CLOSEDS"));
        EXPECT_THAT(dsm.last(disableDs)->sent, IsEmpty());
        expectIdle();
    }
}

TEST_F(AcquisitionTest, ReachesIdleWhenTheSettingsDialogFails) {
    connectWithPages(0);
    dsm.fail(enableDsUiOnly, twain::TWRC_FAILURE);
    controller->toolBarItemSetup(nullptr);
    EXPECT_EQ(dsm.count(closeDs), 1U);
    EXPECT_EQ(scansEnded, 1);
    expectIdle();
    dsm.fail(openDs, twain::TWRC_FAILURE);
    controller->toolBarItemSetup(nullptr);
    EXPECT_EQ(dsm.count(closeDs), 1U);
    expectIdle();
}

TEST_F(AcquisitionTest, ForwardsTheMenuCommands) {
    connectWithPages(0);
    controller->menuFileScan(nullptr);
    EXPECT_EQ(dsm.count(enableDs), 1U);
    controller->closeRequest(nullptr);
    controller->menuFileSetup(nullptr);
    EXPECT_EQ(dsm.count(enableDsUiOnly), 1U);
}

// --- messages of the source ---

TEST_F(AcquisitionTest, IgnoresATransferWithoutAnEnabledSource) {
    connectWithPages(1);
    controller->mNativeTransfer = 2;
    controller->xferReady(nullptr);
    EXPECT_THAT(dsm.calls(), IsEmpty());
}

TEST_F(AcquisitionTest, IgnoresATransferFromTheSettingsDialog) {
    connectWithPages(1);
    dsm.sources[0].setupAnswer = twain::MSG_XFERREADY;
    controller->mNativeTransfer = 2;
    controller->toolBarItemSetup(nullptr);
    dsm.forgetCalls();
    runFor(200);
    EXPECT_THAT(dsm.calls(), IsEmpty());
    EXPECT_TRUE(dsm.isSourceEnabled());
}

TEST_F(AcquisitionTest, ScansOnceHoweverOftenTheSourceSaysReady) {
    connectWithPages(2);
    dsm.sources[0].readyMessages = 5;
    controller->toolBarItemScan(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    runFor(200);
    EXPECT_EQ(scansEnded, 1);
    EXPECT_EQ(controller->imageFilePath.size(), 2U);
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(AcquisitionTest, IgnoresMessagesThatComeAfterTheSession) {
    connectWithPages(1);
    controller->toolBarItemScan(nullptr);
    dsm.send(twain::MSG_CLOSEDSREQ);
    endTwainSession();
    dsm.forgetCalls();
    runFor(200);
    EXPECT_THAT(dsm.calls(), IsEmpty());
    EXPECT_EQ(scansEnded, 0);
}

TEST_F(AcquisitionTest, TakesMessagesFromAnotherThread) {
    connectWithPages(2);
    dsm.sources[0].readyFrom = ReadyFrom::otherThread;
    dsm.sources[0].readyMessages = 2;
    controller->toolBarItemScan(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    EXPECT_EQ(controller->imageFilePath.size(), 2U);
    expectIdle();
}

TEST_F(AcquisitionTest, StaysEnabledWhenTheSourceNeverCallsBack) {
    connectWithPages(1);
    dsm.sources[0].readyMessages = 0;
    controller->toolBarItemScan(nullptr);
    runFor(250);
    EXPECT_EQ(scansEnded, 0);
    EXPECT_TRUE(dsm.isSourceEnabled());
    dsm.send(twain::MSG_CLOSEDSREQ);
    ASSERT_TRUE(runUntilScanEnds());
    expectIdle();
}

TEST_F(AcquisitionTest, DiscardsThePageOfASourceThatWantsToBeClosedFirst) {
    connectWithPages(2);
    dsm.intercept = [this](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
        if (triplet == enableDs)
            dsm.send(twain::MSG_CLOSEDSREQ); // and then that a page is ready
        return std::nullopt;
    };
    controller->toolBarItemScan(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/IDENTITY/OPENDS",
                            "CONTROL/USERINTERFACE/ENABLEDS",
                            "CONTROL/PENDINGXFERS/RESET",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS"));
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    expectIdle();
}

TEST_F(AcquisitionTest, ClosesTheSettingsDialogOfASourceThatHasAPage) {
    connectWithPages(1);
    dsm.intercept = [this](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
        if (triplet == enableDsUiOnly)
            dsm.send(twain::MSG_XFERREADY);
        return std::nullopt;
    };
    dsm.sources[0].setupAnswer = twain::MSG_CLOSEDSOK;
    controller->toolBarItemSetup(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    expectIdle();
}

TEST_F(AcquisitionTest, DropsAMessageOfAnEarlierScan) {
    connectWithPages(1);
    dsm.sources[0].readyMessages = 0;
    controller->nonUI();
    dsm.send(twain::MSG_XFERREADY);
    controller->closeRequest(nullptr);
    controller->nonUI(); // within the tenth of a second
    dsm.forgetCalls();
    runFor(200);
    EXPECT_THAT(dsm.calls(), IsEmpty());
    EXPECT_TRUE(dsm.isSourceEnabled());
}

TEST_F(AcquisitionTest, HoldsACloseRequestUntilThePagesAreHere) {
    connectWithPages(3);
    dsm.intercept = [this](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
        if (triplet == imageInfo) {
            dsm.send(twain::MSG_CLOSEDSREQ);
            runFor(120); // a nested loop, as a source's own dialog might run
        }
        return std::nullopt;
    };
    controller->toolBarItemScan(nullptr);
    ASSERT_TRUE(runUntilScanEnds());
    EXPECT_EQ(controller->imageFilePath.size(), 3U);
    runFor(150);
    expectIdle();
}

TEST_F(AcquisitionTest, TakesAnyOtherMechanismForFileTransfer) {
    connectWithPages(1);
    for (int32_t mechanism : {3, 0, 7, -1}) {
        controller->aquireFileXfer();
        controller->mNativeTransfer = mechanism;
        dsm.forgetCalls();
        controller->xferReady(nullptr);
        EXPECT_EQ(dsm.count(imageFileXfer), 1U) << mechanism;
    }
}

TEST_F(AcquisitionTest, TakesTheSourcesLanguageWhenItCloses) {
    connectWithPages(0);
    const std::string bundle = folder + "/Scanner.ds";
    writeTextFile(bundle + "/Versions/A/cvscan.plist",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                  "<key>Default</key><dict><key>Language</key><integer>6</integer></dict>"
                  "</dict></plist>");
    controller->dsDatas = {{"Scanner.ds", bundle, "Corvane", "Scanner"}};
    controller->setupUI();
    controller->closeRequest(nullptr);
    EXPECT_EQ(controller->profileLanguage, 6);
    EXPECT_EQ(controller->currentLanguage, 6);
}

TEST_F(AcquisitionTest, AsksForExtendedImageInformation) {
    connectWithPages(1);
    dsm.intercept = [](const Triplet& triplet, TW_MEMREF) -> std::optional<uint16_t> {
        if (triplet == extImageInfo)
            return twain::TWRC_INFONOTSUPPORTED;
        return std::nullopt;
    };
    EXPECT_EQ(controller->ShowBarcodeInfo(), twain::TWRC_INFONOTSUPPORTED);
    EXPECT_EQ(dsm.last(extImageInfo)->sentAs<TW_EXTIMAGEINFO>().NumInfos, 1U);
    EXPECT_TRUE(dsm.last(extImageInfo)->destination);
}

TEST_F(AcquisitionTest, MeasuresPagesAndReachesIdle) {
    connectWithPages(3);
    controller->aquireMemoryXfer();
    controller->speedTest();
    EXPECT_EQ(dsm.count(imageInfo), 3U);
    EXPECT_EQ(dsm.count(endXfer), 3U);
    EXPECT_THAT(controller->imageFilePath, IsEmpty());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    expectIdle();
}

TEST_F(AcquisitionTest, MeasuresNothingMoreAfterAPageThatCannotBeHeld) {
    connectWithPages(3);
    dsm.sources[0].pages[1].infoCode = twain::TWRC_FAILURE;
    controller->aquireMemoryXfer();
    controller->speedTest();
    EXPECT_EQ(dsm.count(imageInfo), 2U);
    EXPECT_EQ(dsm.count(resetXfer), 1U);
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
    expectIdle();
}

TEST_F(AcquisitionTest, LetsTheObserverTakeItselfAway) {
    connectWithPages(0);
    int told = 0;
    controller->scanEndedObserver = [&] {
        ++told;
        controller->scanEndedObserver = nullptr;
    };
    controller->endScan();
    controller->endScan();
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace paperline::test
