// From process start to the main window, and to the end, whatever sources there are.
#include "tests/app/LaunchFixture.h"

#include "base/BrandProfile.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/places/Places.h"
#include "tests/support/Brands.h"
#include "twain/TWAINHandler.h"
#include "ui/MenuText.h"
#include "ui/SaveFolderTextField.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QMainWindow>
#include <QMenu>
#include <QScreen>
#include <QScrollArea>
#include <QTableView>
#include <QTimer>
#include <QToolBar>

#include <gmock/gmock.h>

#include <algorithm>

namespace paperline::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string languagePlist(int language) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
           "<key>Default</key><dict><key>Language</key><integer>" +
           std::to_string(language) +
           "</integer><key>Lamp</key><string>warm</string></dict></dict></plist>";
}

class LifecycleTest : public LaunchFixture {
protected:
    std::string text(const char* key) const { return localizedString(gLanguageBundle, key); }
    void addTwoSources() {
        addSource("Scanner One");
        addSource("Scanner Two");
    }
    void chooseOnOk(int row) {
        whenAsked([this, row](AppDelegate& asked) {
            chooseRow(asked, row);
            asked.doBtnOK(nullptr);
        });
    }
    // The launch has ended in a termination that leaves the settings alone.
    void expectAborted() {
        EXPECT_TRUE(launchAborted);
        EXPECT_TRUE(terminationRequested());
        EXPECT_FALSE(controller->paperlineWindow->isVisible());
    }
    std::vector<std::string> opened() const {
        std::vector<std::string> names;
        for (const RecordedCall& call : dsm.calls())
            if (call.triplet == openDs)
                names.push_back(call.sentAs<TW_IDENTITY>().ProductName.text());
        return names;
    }
};

TEST_F(LifecycleTest, SaysThatNoSourceIsInstalledAndEnds) {
    writeSettings("<key>ScannerName</key><string>Old</string>");
    const std::string before = settingsText();
    ASSERT_TRUE(launch());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].title, text("szWarning"));
    EXPECT_EQ(alerts[0].message, text("NOInstallDS"));
    EXPECT_EQ(alerts[0].informativeText, "");
    EXPECT_EQ(alerts[0].defaultButton, text("Exit"));
    expectAborted();
    end();
    EXPECT_EQ(settingsText(), before);
    EXPECT_EQ(dsm.count(openDs), 0U);
    EXPECT_FALSE(dsm.isManagerOpen());
}

TEST_F(LifecycleTest, WritesNoSettingsWithoutASource) {
    ASSERT_TRUE(launch());
    closeAndEnd();
    EXPECT_FALSE(fileExists(settingsFile()));
}

TEST_F(LifecycleTest, StartsWithItsDefaults) {
    addSource("Scanner One");
    controller = std::make_unique<AppDelegate>();
    AppDelegate& made = *controller;
    made._selectedRaw = made._fitOrAcutalImage = made.mMenuFileSave = 7;
    made._FloppySwitchON = made.firstFitImage = made.nonFileSaveImageInTempFolder = 7;
    made.changeThumbnailSelect = made.mNeedSetImage = 7;
    made.mSourceDSSelect = made.currentPage = 7;
    made.imageFilePath = {"stale"};
    QApplication::setWindowIcon({});
    ASSERT_EQ(made.init(), &made);
    EXPECT_EQ(made._selectedRaw, -1);
    EXPECT_EQ(made._fitOrAcutalImage, 1);
    EXPECT_EQ(made._FloppySwitchON, 1);
    EXPECT_EQ(made.mSourceDSSelect, UINT32_MAX);
    EXPECT_EQ(made.currentPage, 1U);
    EXPECT_THAT(made.imageFilePath, IsEmpty());
    EXPECT_EQ(made.mCurrentPath, bundle);
    EXPECT_EQ(made.mResourcePath, bundle + "/Contents/Resources");
    EXPECT_EQ(made.mMenuFileSave, 1);
    EXPECT_EQ(made.firstFitImage, 0);
    EXPECT_EQ(made.nonFileSaveImageInTempFolder, 0);
    EXPECT_EQ(made.changeThumbnailSelect, 0);
    EXPECT_EQ(made.mNeedSetImage, 1);
    EXPECT_EQ(made.mVersionMajor, 12);
    EXPECT_EQ(made.mVersionMinor, 5);
    EXPECT_FALSE(launchAborted);
    EXPECT_FALSE(QApplication::windowIcon().isNull());
    EXPECT_THAT(made.dsArray, ::testing::SizeIs(1));
}

TEST_F(LifecycleTest, ShowsItsWindowAsItIsToBe) {
    addSource("Scanner One");
    controller = std::make_unique<AppDelegate>();
    AppDelegate& made = *controller;
    ASSERT_EQ(made.init(), &made);
    made.loadInterface();
    made.cellInfos.resize(3);
    made.applicationWillFinishLaunching();
    EXPECT_THAT(made.cellInfos, IsEmpty());
    EXPECT_FALSE(made.paperlineToolbar->isMovable());
    EXPECT_EQ(made.paperlineToolbar->contextMenuPolicy(), Qt::PreventContextMenu);
    made.cellInfoImages.resize(2);
    made.showImageScrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    made.showImageScrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    launchAborted = true;
    made.applicationDidFinishLaunching();
    EXPECT_FALSE(launchAborted) << "what an earlier launch left";
    EXPECT_THAT(made.cellInfoImages, IsEmpty());
    EXPECT_EQ(made.showImageScrollView->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(made.showImageScrollView->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(made.paperlineToolbar_FileFormatsCombox->currentIndex(), 1);
}

// Told to end before it could begin, it knows neither settings nor their place.
TEST_F(LifecycleTest, WritesNoSettingsWithoutALaunch) {
    const std::string own = userDataFolder() + "/Contents/MACOS/CvPaperline_lng.plist";
    writeTextFile(own, "the settings of the last time");
    controller = std::make_unique<AppDelegate>();
    controller->applicationWillTerminate();
    EXPECT_EQ(textOfFile(own), "the settings of the last time");
}

TEST_F(LifecycleTest, OpensTheOnlySourceWithoutAsking) {
    addSource("Scanner One");
    ASSERT_TRUE(launch());
    EXPECT_EQ(selectionsShown, 0);
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_FALSE(terminationRequested());
    EXPECT_TRUE(controller->paperlineWindow->isVisible());
    EXPECT_EQ(controller->mSourceDSSelect, 0U);
    EXPECT_EQ(controller->SelectSourceCount, 1U);
    EXPECT_EQ(controller->scannerName, "Scanner One");
    EXPECT_EQ(controller->currentProductName, "Scanner One");
    EXPECT_GT(controller->saveRect.width, 0);
    EXPECT_GT(controller->saveRect.height, 0);
    EXPECT_EQ(controller->currentSaveFolder->folderText(), home + "/Documents/Image");
    EXPECT_FALSE(fileExists(home + "/Documents/Image")); // made by the first scan
    EXPECT_THAT(opened(), ElementsAre("Scanner One"));
    EXPECT_FALSE(dsm.isSourceOpen()); // opened for a test only
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(LifecycleTest, AWindowWiderThanTheScreenStartsAtItsEdge) {
    addSource("Scanner One");
    ASSERT_TRUE(launch());
    const QWidget& window = *controller->paperlineWindow;
    const QRect screen = window.screen()->availableGeometry();
    ASSERT_GT(window.width(), screen.width());
    ASSERT_LT(window.height(), screen.height());
    EXPECT_EQ(window.x(), screen.x());
    EXPECT_NEAR(window.geometry().center().y(), screen.center().y(), 20);
}

TEST_F(LifecycleTest, EndsWhenTheOnlySourceDoesNotOpen) {
    addSource("Scanner One");
    writeTextFile(languageFile("Scanner One"), languagePlist(6));
    writeSettings("<key>Language</key><integer>0</integer>");
    const std::string before = settingsText();
    dsm.fail(openDs, twain::TWRC_FAILURE);
    ASSERT_TRUE(launch());
    EXPECT_EQ(selectionsShown, 0);
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].message, text("SourceNotOpened"));
    expectAborted();
    // Its own language is back before the application ends.
    EXPECT_THAT(textOfFile(languageFile("Scanner One")), HasSubstr("<integer>6</integer>"));
    end();
    EXPECT_EQ(settingsText(), before);
    EXPECT_EQ(dsm.count(closeDs), 0U);
}

TEST_F(LifecycleTest, LetsTheUserChooseAmongSeveral) {
    addTwoSources();
    chooseOnOk(1);
    ASSERT_TRUE(launch());
    EXPECT_EQ(selectionsShown, 1);
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_TRUE(controller->paperlineWindow->isVisible());
    EXPECT_FALSE(controller->twainSelectSourceWindow->isVisible());
    EXPECT_EQ(controller->mSourceDSDefault, 0U);
    EXPECT_EQ(controller->mSourceDSSelect, 1U);
    EXPECT_EQ(controller->scannerName, "Scanner Two");
    EXPECT_EQ(controller->currentProductName, "Scanner Two");
    EXPECT_THAT(opened(), ElementsAre("Scanner Two"));
}

TEST_F(LifecycleTest, TakesThePreselectedSourceOnOk) {
    addTwoSources();
    whenAsked([](AppDelegate& asked) { asked.doBtnOK(nullptr); });
    ASSERT_TRUE(launch());
    EXPECT_THAT(opened(), ElementsAre("Scanner One"));
}

TEST_F(LifecycleTest, PreselectsTheRememberedSource) {
    addTwoSources();
    writeSettings("<key>ScannerName</key><string>Scanner Two</string>");
    whenAsked([](AppDelegate& asked) {
        EXPECT_EQ(asked.mSourceDSDefault, 1U);
        EXPECT_EQ(asked.mSourceDSSelect, 1U);
        const QTableView* table = asked._tableViewSelectSource;
        EXPECT_EQ(table->currentIndex().row(), 1);
        EXPECT_EQ(table->currentIndex().column(), std::min(2, table->model()->columnCount() - 1));
        EXPECT_TRUE(table->styleSheet().contains("gridline-color: blue"));
        asked.doBtnOK(nullptr);
    });
    ASSERT_TRUE(launch());
    EXPECT_THAT(opened(), ElementsAre("Scanner Two"));
}

TEST_F(LifecycleTest, PreselectsTheFirstSourceForAnUnknownName) {
    addTwoSources();
    writeSettings("<key>ScannerName</key><string>Gone</string>");
    whenAsked([](AppDelegate& asked) {
        EXPECT_EQ(asked.mSourceDSSelect, 0U);
        asked.doBtnOK(nullptr);
    });
    ASSERT_TRUE(launch());
    EXPECT_THAT(opened(), ElementsAre("Scanner One"));
}

TEST_F(LifecycleTest, TakesTheManagersDefaultWhenNoneIsChosen) {
    addTwoSources();
    dsm.defaultSource = 1;
    whenAsked([](AppDelegate& asked) {
        asked.mSourceDSSelect = UINT32_MAX;
        asked.doBtnOK(nullptr);
    });
    ASSERT_TRUE(launch());
    EXPECT_THAT(opened(), ElementsAre("Scanner Two"));
    EXPECT_EQ(controller->mSourceDSSelect, 1U);
    EXPECT_EQ(controller->currentProductName, "Scanner Two");
}

TEST_F(LifecycleTest, EndsWhenTheSelectionIsCancelledButKeepsTheSettings) {
    addTwoSources();
    writeTextFile(languageFile("Scanner One"), languagePlist(6));
    writeSettings("<key>ada/Scanner One</key><dict><key>SavePath</key><string>/kept/Bill"
                  "</string><key>Other</key><string>survives</string></dict>");
    whenAsked([](AppDelegate& asked) { asked.doBtnCancel(nullptr); });
    ASSERT_TRUE(launch());
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_FALSE(launchAborted);
    EXPECT_TRUE(terminationRequested());
    EXPECT_FALSE(controller->paperlineWindow->isVisible());
    EXPECT_THAT(opened(), IsEmpty());
    end();
    EXPECT_THAT(settingsText(), HasSubstr("<key>ScannerName</key>"));
    EXPECT_THAT(settingsText(), HasSubstr("/kept/Bill<"));
    EXPECT_THAT(settingsText(), HasSubstr("survives"));
    EXPECT_THAT(textOfFile(languageFile("Scanner One")), HasSubstr("<integer>6</integer>"));
}

TEST_F(LifecycleTest, EndsWhenTheChosenSourceDoesNotOpen) {
    addTwoSources();
    writeTextFile(languageFile("Scanner One"), languagePlist(6));
    writeSettings("<key>Language</key><integer>0</integer>");
    const std::string before = settingsText();
    dsm.fail(openDs, twain::TWRC_FAILURE);
    chooseOnOk(1);
    ASSERT_TRUE(launch());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].message, text("SourceNotOpened"));
    expectAborted();
    EXPECT_THAT(textOfFile(languageFile("Scanner One")), HasSubstr("<integer>6</integer>"));
    EXPECT_FALSE(fileExists(languageFile("Scanner Two")));
    end();
    EXPECT_EQ(settingsText(), before);
}

TEST_F(LifecycleTest, GivesEachSourceItsOwnLanguageBack) {
    addTwoSources();
    writeTextFile(languageFile("Scanner One"), languagePlist(6));
    writeTextFile(languageFile("Scanner Two"), languagePlist(7));
    writeSettings("<key>Language</key><integer>5</integer>");
    chooseOnOk(1);
    ASSERT_TRUE(launch());
    EXPECT_THAT(textOfFile(languageFile("Scanner One")), HasSubstr("<integer>6</integer>"));
    EXPECT_THAT(textOfFile(languageFile("Scanner Two")), HasSubstr("<integer>5</integer>"));
    closeAndEnd();
    EXPECT_THAT(textOfFile(languageFile("Scanner Two")), HasSubstr("<integer>7</integer>"));
    EXPECT_THAT(textOfFile(languageFile("Scanner Two")), HasSubstr("<string>warm</string>"));
}

TEST_F(LifecycleTest, LoadsTheSettingsOfTheChosenSource) {
    addTwoSources();
    writeSettings("<key>ada/Scanner One</key><dict><key>SavePath</key><string>/one/Bill</string>"
                  "<key>FileFormat</key><integer>0</integer></dict>"
                  "<key>ada/Scanner Two</key><dict><key>SavePath</key><string>/two/Letter</string>"
                  "<key>FileFormat</key><integer>2</integer></dict>");
    chooseOnOk(1);
    ASSERT_TRUE(launch());
    EXPECT_EQ(controller->currentSaveFolder->folderText(), "/two/Letter");
    EXPECT_EQ(controller->profileFileformatSelect, 2);
    EXPECT_EQ(controller->paperlineToolbar_FileFormatsCombox->currentIndex(), 2);
}

TEST_F(LifecycleTest, LaunchesEveryBrand) {
    struct Brand {
        uint32_t code;
        const char* title;
        const char* product;
        const char* maker;
    };
    for (const Brand& brand : {Brand{0, "Paperline", "Paperline", "Company"},
                               Brand{1, "Corvane Paperline", "Corvane Paperline", "Corvane"},
                               Brand{2, "Talmerick Sheetdesk", "Talmerick Sheetdesk", "Corvane"},
                               Brand{3, "Nimro Docklet", "Corvane Paperline", "Corvane"},
                               Brand{4, "Lumo Docklet", "Lumo Paperline", "Lumo"},
                               Brand{5, "Vellum Desk", "Vellum Desk", "Hatsell"},
                               Brand{6, "VellumRoam", "VellumRoam", "Hatsell"},
                               Brand{7, "Roaming Leaf GATHER", "Roaming Leaf GATHER", "Hatsell"},
                               Brand{testing_support::unlistedBrand,
                                     "Corvane Paperline",
                                     "Corvane Paperline",
                                     "Corvane"}}) {
        SCOPED_TRACE(brand.code);
        controller.reset();
        endTwainSession();
        resetTerminationRequest();
        dsm.reset();
        addSource("Scanner One");
        ASSERT_TRUE(launch(brand.code));
        EXPECT_EQ(gBrandNumber, brand.code);
        EXPECT_EQ(controller->paperlineWindow->windowTitle(), brand.title);
        const TW_IDENTITY origin = dsm.last(openDsm)->origin;
        EXPECT_EQ(origin.ProductName.text(), brand.product);
        EXPECT_EQ(origin.Manufacturer.text(), brand.maker);
        EXPECT_EQ(origin.ProductFamily.text(), "PageCentral");

        const bool saves = brand.code != 2 && brand.code != 3;
        const QList<QAction*> tools = controller->paperlineToolbar->actions();
        EXPECT_EQ(tools.contains(controller->paperlineToolbar_FileFormat), saves);
        const QList<QAction*> file = controller->fileMenuSave->actions();
        EXPECT_EQ(file.contains(controller->fileSave), saves);
        EXPECT_EQ(file.indexOf(controller->fileSetup), saves ? 2 : 0);
        const bool offersPng = brand.code >= 5 && brand.code <= 7;
        const QComboBox* formats = controller->paperlineToolbar_FileFormatsCombox;
        EXPECT_EQ(formats->count(), offersPng ? 8 : 7);
        EXPECT_EQ(formats->findText("PNG"), offersPng ? 7 : -1);
        closeAndEnd();
    }
}

TEST_F(LifecycleTest, MakesItsTemporaryFolderAfreshAndRemovesItWithTheWindow) {
    addSource("Scanner One");
    const std::string root = scratchPath("/tmp/CorvaneTempImage");
    writeTextFile(root + "/left/over.bin", "of a run that crashed");
    ASSERT_TRUE(launch());
    EXPECT_THAT(folderEntries(root),
                ::testing::UnorderedElementsAre("MultiImage", "MultiImage_Scale"));
    EXPECT_FALSE(terminationRequested());
    controller->windowWillClose();
    EXPECT_FALSE(fileExists(root));
    EXPECT_TRUE(terminationRequested());
}

TEST_F(LifecycleTest, NeverRemovesPagesThatItCannotKeep) {
    addSource("Scanner One");
    const std::string root = scratchPath("/tmp/CorvaneTempImage");
    const std::string kept = userDataFolder() + "/Kept Pages";
    writeTextFile(root + "/MultiImage/Image_00001.jpg", "of a run that crashed");
    writeTextFile(kept, "a file in the folder's place");
    ASSERT_TRUE(launch());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].message, text("PagesKept"));
    const std::string left = alerts[0].informativeText;
    EXPECT_EQ(textOfFile(left + "/Image_00001.jpg"), "of a run that crashed");
    EXPECT_THAT(folderEntries(root + "/MultiImage"), IsEmpty());
    closeAndEnd();
    EXPECT_EQ(textOfFile(left + "/Image_00001.jpg"), "of a run that crashed");

    removePath(kept);
    alerts.clear();
    resetTerminationRequest();
    ASSERT_TRUE(launch());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(textOfFile(alerts[0].informativeText + "/Image_00001.jpg"), "of a run that crashed");
    EXPECT_EQ(folderOfPath(alerts[0].informativeText), kept);
    closeAndEnd();
    EXPECT_FALSE(fileExists(root));
}

TEST_F(LifecycleTest, KeepsThePagesOfCommandsThatWereEndedFromOutside) {
    addSource("Scanner One");
    std::string error;
    std::string dead;
    std::string alive;
    {
        std::optional<ProcessScratch> scratch = makeProcessScratch(scratchRoot(), error);
        ASSERT_TRUE(scratch) << error;
        dead = scratch->folder;
        writeTextFile(dead + "/CorvaneTempImage/MultiImage/Image_00001.tif", "page");
        writeTextFile(dead + "/CorvaneTempImage/MultiImage_Scale/Image_00001.tif", "its copy");
    }
    std::optional<ProcessScratch> living = makeProcessScratch(scratchRoot(), error);
    ASSERT_TRUE(living) << error;
    alive = living->folder;
    writeTextFile(alive + "/CorvaneTempImage/MultiImage/Image_00001.tif", "being scanned");
    ASSERT_TRUE(launch());
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_THAT(folderEntries(alerts[0].informativeText), ElementsAre("Image_00001.tif"));
    EXPECT_EQ(textOfFile(alerts[0].informativeText + "/Image_00001.tif"), "page");
    EXPECT_FALSE(fileExists(dead));
    EXPECT_EQ(textOfFile(alive + "/CorvaneTempImage/MultiImage/Image_00001.tif"), "being scanned");
    removePath(alive);
}

TEST_F(LifecycleTest, WritesTheSettingsAtItsEnd) {
    addSource("Scanner One");
    writeSettings(
        "<key>Elsewhere</key><string>kept</string>"
        "<key>ada/Scanner One</key><dict><key>Extra</key><string>kept too</string></dict>");
    ASSERT_TRUE(launch());
    controller->profileFileformatSelect = 2;
    controller->profileShowInFinder = 1;
    controller->currentSaveFolder->setFolderText("/some/where/");
    closeAndEnd();
    const std::string settings = settingsText();
    EXPECT_THAT(settings, HasSubstr("<key>ScannerName</key>\n\t<string>Scanner One</string>"));
    EXPECT_THAT(settings, HasSubstr("<string>/some/where/Image</string>"));
    EXPECT_THAT(settings, HasSubstr("<key>FileFormat</key>\n\t\t<integer>2</integer>"));
    EXPECT_THAT(settings, HasSubstr("<key>ShowInFinder</key>\n\t\t<integer>1</integer>"));
    EXPECT_THAT(settings, HasSubstr("<string>kept</string>"));
    EXPECT_THAT(settings, HasSubstr("<string>kept too</string>"));
}

TEST_F(LifecycleTest, ReplacesADamagedSettingsFileAtItsEnd) {
    addSource("Scanner One");
    writeTextFile(settingsFile(), "<plist><dict><key>torn");
    ASSERT_TRUE(launch());
    EXPECT_THAT(alerts, IsEmpty());
    closeAndEnd();
    EXPECT_THAT(settingsText(), HasSubstr("ada/Scanner One"));
    EXPECT_THAT(settingsText(), Not(HasSubstr("torn")));
}

TEST_F(LifecycleTest, TakesTheSessionDownInReverse) {
    addSource("Scanner One");
    ASSERT_TRUE(launch());
    controller->toolBarItemSetup(nullptr); // a dialog that never answers
    ASSERT_TRUE(dsm.isSourceEnabled());
    dsm.forgetCalls();
    closeAndEnd();
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS",
                            "CONTROL/PARENT/CLOSEDSM"));
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(LifecycleTest, DiscardsThePageThatWaitsBeforeItEnds) {
    addSource("Scanner One").pages.assign(2, goodPage(pageInfo(8, 8, 8, 100)));
    ASSERT_TRUE(launch());
    controller->toolBarItemScan(nullptr); // its page is ready, the message not yet delivered
    ASSERT_TRUE(dsm.isSourceEnabled());
    dsm.forgetCalls();
    closeAndEnd();
    EXPECT_THAT(dsm.names(),
                ElementsAre("CONTROL/PENDINGXFERS/RESET",
                            "CONTROL/USERINTERFACE/DISABLEDS",
                            "CONTROL/IDENTITY/CLOSEDS",
                            "CONTROL/PARENT/CLOSEDSM"));
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(LifecycleTest, EndsTheMainLoopFromWithin) {
    addTwoSources();
    whenAsked([](AppDelegate& asked) { asked.doBtnCancel(nullptr); });
    QTimer::singleShot(0, [this] { launch(); });
    QTimer::singleShot(10'000, [] {
        ADD_FAILURE() << "the main loop goes on";
        QApplication::exit(1);
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(terminationRequested());
    end();
    EXPECT_TRUE(fileExists(settingsFile()));
}

TEST_F(LifecycleTest, MayBeToldToEndWhileTheUserChooses) {
    addTwoSources();
    whenAsked([](AppDelegate&) { requestTermination(); });
    QTimer::singleShot(0, [this] { launch(); });
    QTimer::singleShot(10'000, [] {
        ADD_FAILURE() << "the main loop goes on";
        QApplication::exit(1);
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_THAT(opened(), IsEmpty());
    EXPECT_FALSE(controller->paperlineWindow->isVisible());
}

TEST_F(LifecycleTest, MayBeToldToEndDuringTheSession) {
    addSource("Scanner One").pages.assign(1, goodPage(pageInfo(8, 8, 8, 100)));
    QTimer::singleShot(0, [this] {
        launch();
        controller->toolBarItemScan(nullptr); // its message waits in the main loop
        requestTermination();
    });
    QTimer::singleShot(10'000, [] {
        ADD_FAILURE() << "the main loop goes on";
        QApplication::exit(1);
    });
    EXPECT_EQ(QApplication::exec(), 0);
    end();
    EXPECT_TRUE(fileExists(settingsFile()));
    EXPECT_FALSE(dsm.isSourceOpen());
    EXPECT_FALSE(dsm.isManagerOpen());
    EXPECT_THAT(dsm.sequenceErrors(), IsEmpty());
}

TEST_F(LifecycleTest, TheScanEntryScans) {
    addSource("Scanner One");
    ASSERT_TRUE(launch());
    controller->fileScan->trigger();
    EXPECT_EQ(dsm.count(enableDs), 1U);
    EXPECT_EQ(dsm.count(enableDsUiOnly), 0U);
    closeAndEnd();
}

TEST_F(LifecycleTest, TheSetupEntryShowsTheSourcesOwnDialog) {
    addSource("Scanner One");
    ASSERT_TRUE(launch());
    controller->fileSetup->trigger();
    EXPECT_EQ(dsm.count(enableDs), 0U);
    EXPECT_EQ(dsm.count(enableDsUiOnly), 1U);
    closeAndEnd();
}

} // namespace
} // namespace paperline::test
