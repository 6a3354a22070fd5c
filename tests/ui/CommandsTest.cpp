#include "tests/ui/InterfaceFixture.h"
#include "ui/ThemedIcon.h"
#include "viewer/ImageView.h"

#include <QImage>

#include <tuple>

namespace paperline {
namespace {

QImage drawn(const QIcon& icon) {
    return icon.pixmap(QSize(24, 24), 1.0).toImage();
}

class CommandsTest : public InterfaceFixture {
protected:
    QImage switchPicture() { return drawn(controller->paperlineToolbar_FileFormat->icon()); }
    static QImage resource(const std::string& name) {
        return drawn(themedIcon(resourcePath() + "/" + name));
    }
    // A row of the page list with a white page behind it.
    void listPage(const std::string& name, QSize size) {
        QImage page(size, QImage::Format_RGB32);
        page.fill(Qt::white);
        const std::string path = folder + "/" + name;
        ASSERT_TRUE(page.save(QString::fromStdString(path)));
        controller->cellInfos.push_back({.title = {},
                                         .subtitle = name,
                                         .image = page.scaled(12, 12),
                                         .imageFullPath = path,
                                         .imageIndex = 0});
    }
};

// e, the save switch, and whether the source's own dialog is in use.
class EnablingRules : public CommandsTest,
                      public testing::WithParamInterface<std::tuple<bool, int, int>> {};

TEST_P(EnablingRules, FollowTheFlagTheSwitchAndTheDialog) {
    const auto [enabled, save, setup] = GetParam();
    AppDelegate& made = start();
    made.mMenuFileSave = save;
    made.mScanSetup = setup;
    made.enableToolbatItems(enabled);
    for (const QAction* item : {made.paperlineToolbar_Setup,
                                made.paperlineToolbar_Scan,
                                made.paperlineToolbar_FileFormat,
                                made.paperlineToolbar_FolderSelect,
                                made.paperlineToolbar_OpenDlg,
                                made.paperlineToolbar_FitPage,
                                made.paperlineToolbar_ActualPage,
                                made.fileMenuItem,
                                made.subMenuItemLanguage,
                                made.subMenuItemFileOption})
        EXPECT_EQ(item->isEnabled(), enabled) << item->text().toStdString();
    const bool saves = save != 0 && setup != 1;
    EXPECT_EQ(made.paperlineToolbar_FileFormatsCombox->isEnabled(), saves);
    EXPECT_EQ(made.currentSaveFolder->isEnabled(), saves);
}

INSTANTIATE_TEST_SUITE_P(AllCases,
                         EnablingRules,
                         testing::Combine(testing::Bool(),
                                          testing::Values(0, 1),
                                          testing::Values(0, 1)));

TEST_F(CommandsTest, EnablingLeavesFormatAndFolderOffWhileTheSwitchIsOff) {
    AppDelegate& made = start();
    made.menuFileSave(nullptr);
    made.enableToolbatItems(true);
    EXPECT_FALSE(made.paperlineToolbar_FileFormatsCombox->isEnabled());
    EXPECT_FALSE(made.currentSaveFolder->isEnabled());
    EXPECT_TRUE(made.paperlineToolbar_Scan->isEnabled());
}

TEST_F(CommandsTest, AControlThatStaysUsableDuringAScanIsTheApplicationMenusQuit) {
    AppDelegate& made = start();
    made.enableToolbatItems(false);
    EXPECT_TRUE(made.systemQuitCPL->isEnabled());
    EXPECT_TRUE(made.windowMini->isEnabled());
}

TEST_F(CommandsTest, TheSaveSwitchFlipsBothItsStates) {
    AppDelegate& made = start();
    made.menuFileSave(nullptr);
    EXPECT_EQ(made._FloppySwitchON, 0);
    EXPECT_EQ(made.mMenuFileSave, 0);
    EXPECT_FALSE(made.fileSave->isChecked());
    EXPECT_FALSE(made.paperlineToolbar_FileFormatsCombox->isEnabled());
    EXPECT_FALSE(made.currentSaveFolder->isEnabled());
    made.toolBarItemFileFormat(nullptr); // the button does the same
    EXPECT_EQ(made._FloppySwitchON, 1);
    EXPECT_EQ(made.mMenuFileSave, 1);
    EXPECT_TRUE(made.fileSave->isChecked());
    EXPECT_TRUE(made.paperlineToolbar_FileFormatsCombox->isEnabled());
    EXPECT_TRUE(made.currentSaveFolder->isEnabled());
}

TEST_F(CommandsTest, ClickingTheSaveEntryLeavesItsMarkOnTheSwitch) {
    AppDelegate& made = start();
    made.fileSave->trigger();
    EXPECT_EQ(made.mMenuFileSave, 0);
    EXPECT_FALSE(made.fileSave->isChecked());
    made.fileSave->trigger();
    EXPECT_EQ(made.mMenuFileSave, 1);
    EXPECT_TRUE(made.fileSave->isChecked());
}

TEST_F(CommandsTest, TheSaveSwitchShowsTheFloppyOrItsPushedForm) {
    start(7);
    const QImage on = resource("Floppy.png");
    const QImage off = resource("Floppy_PushDown.png");
    ASSERT_FALSE(on.isNull());
    ASSERT_NE(on, off);
    EXPECT_EQ(switchPicture(), on);
    controller->menuFileSave(nullptr);
    EXPECT_EQ(switchPicture(), off);
    controller->menuFileSave(nullptr);
    EXPECT_EQ(switchPicture(), on);
}

TEST_F(CommandsTest, BrandsWithoutASaveCommandShowThePagesPanel) {
    for (const uint32_t brand : {2u, 3u}) {
        start(brand);
        const QImage on = resource("CollapsePagesPanel.png");
        const QImage off = resource("CollapsePagesPanel_PushDown.png");
        ASSERT_FALSE(on.isNull());
        ASSERT_NE(on, off);
        EXPECT_EQ(switchPicture(), on) << brand;
        controller->menuFileSave(nullptr);
        EXPECT_EQ(switchPicture(), off) << brand;
    }
}

TEST_F(CommandsTest, AMissingPictureLeavesTheButtonWithoutOne) {
    AppDelegate& made = start();
    made.mCurrentPath = folder;
    made.menuFileSave(nullptr);
    EXPECT_TRUE(made.paperlineToolbar_FileFormat->icon().isNull());
}

TEST_F(CommandsTest, TheSwitchLaysOutThePanes) {
    AppDelegate& made = start();
    window().show();
    QApplication::processEvents();
    EXPECT_EQ(window().size(), QSize(1024, 678));
    EXPECT_EQ(made.paperlineSplitView->sizes().at(0), 215);
    made.menuFileSave(nullptr);
    QApplication::processEvents();
    EXPECT_FALSE(made.thumbnailView->isVisible());
    EXPECT_EQ(made.showImageScrollView->width(), 1024);
    made.menuFileSave(nullptr);
    QApplication::processEvents();
    EXPECT_TRUE(made.thumbnailView->isVisible());
    EXPECT_EQ(made.paperlineSplitView->sizes().at(0), 215);
    EXPECT_EQ(made.showImageScrollView->width(),
              1024 - 215 - made.paperlineSplitView->handleWidth());
}

TEST_F(CommandsTest, TheSwitchShowsTheSelectedPageAgainInTheModeInForce) {
    AppDelegate& made = start();
    window().show();
    listPage("small.png", QSize(200, 300));
    listPage("large.png", QSize(1500, 2000));
    made.reloadMainTable();
    made._tableViewMain->setCurrentIndex(made._tableViewMain->model()->index(0, 0));
    made.mImageView->setImage(nullptr, {});
    made.menuFileSave(nullptr); // fitted pages that are not saved are read again
    EXPECT_EQ(made.mImageView->pagePixels(), (PixelSize{200, 300}));
    made.menuFileSave(nullptr);

    made._tableViewMain->setCurrentIndex(made._tableViewMain->model()->index(1, 0));
    made.paperlineToolbar_ActualPage->trigger();
    made.menuFileSave(nullptr);
    EXPECT_EQ(made.mImageView->size(), QSize(1515, 2010));
    EXPECT_EQ(made.showImageScrollView->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
}

TEST_F(CommandsTest, TheSwitchWithoutASelectionShowsTheNewestPage) {
    AppDelegate& made = start();
    window().show();
    listPage("small.png", QSize(200, 300));
    listPage("wide.png", QSize(300, 200));
    made.menuFileSave(nullptr);
    EXPECT_EQ(made.mImageView->pagePixels(), (PixelSize{300, 200}));
}

TEST_F(CommandsTest, TheWindowsEntriesActOnIt) {
    host().systemVersion = [] { return SystemVersion{12, 14, 0}; };
    AppDelegate& made = start();
    window().show();
    for (QAction* hide : {made.windowMini, made.systemHideCPL}) {
        hide->trigger();
        EXPECT_TRUE(window().isMinimized()) << hide->text().toStdString();
        made.systemShowAll->trigger();
        EXPECT_FALSE(window().isMinimized()) << hide->text().toStdString();
    }
    EXPECT_FALSE(made.systemHideOthers->isVisible()); // no desktop here lets a program do that
    made.systemAbout->trigger();
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_TRUE(alerts[0].message.starts_with("Roaming Leaf GATHER\n"));
    made.systemQuitCPL->trigger();
    EXPECT_TRUE(terminationRequested());
}

TEST_F(CommandsTest, FormatsOneToSevenAreTakenAndAnyOtherIndexIsBmp) {
    AppDelegate& made = start();
    for (int index = 1; index <= 7; ++index) {
        made.toolBarItemFileFormatSelect(index);
        EXPECT_EQ(made.profileFileformatSelect, index);
    }
    for (const int index : {0, -1, 8, 1000}) {
        made.profileFileformatSelect = 5;
        made.toolBarItemFileFormatSelect(index);
        EXPECT_EQ(made.profileFileformatSelect, 0) << index;
    }
}

TEST_F(CommandsTest, OnlyTheUsersChoiceInTheFormatListCounts) {
    AppDelegate& made = start();
    made.profileFileformatSelect = 5;
    made.paperlineToolbar_FileFormatsCombox->setCurrentIndex(2);
    EXPECT_EQ(made.profileFileformatSelect, 5);
    emit made.paperlineToolbar_FileFormatsCombox->activated(2);
    EXPECT_EQ(made.profileFileformatSelect, 2);
}

TEST_F(CommandsTest, TheViewModesButtonsShowTheModeInForce) {
    AppDelegate& made = start();
    EXPECT_TRUE(made.paperlineToolbar_FitPage->isChecked());
    made.paperlineToolbar_ActualPage->trigger(); // no page yet: the mode stays
    EXPECT_TRUE(made.paperlineToolbar_FitPage->isChecked());
    EXPECT_FALSE(made.paperlineToolbar_ActualPage->isChecked());
    made.cellInfos.resize(1);
    made._selectedRaw = 0;
    made.paperlineToolbar_ActualPage->trigger();
    EXPECT_EQ(made._fitOrAcutalImage, 2);
    EXPECT_FALSE(made.paperlineToolbar_FitPage->isChecked());
    EXPECT_TRUE(made.paperlineToolbar_ActualPage->isChecked());
    made.paperlineToolbar_ActualPage->trigger(); // the mode in force again
    EXPECT_TRUE(made.paperlineToolbar_ActualPage->isChecked());
}

TEST_F(CommandsTest, QuitAsksForTermination) {
    start().fileQuit->trigger();
    EXPECT_TRUE(terminationRequested());
}

TEST_F(CommandsTest, TheLanguageCommandItselfDoesNothing) {
    AppDelegate& made = start();
    made.menuFileSelectLanguage(nullptr);
    EXPECT_EQ(made.profileLanguage, 0);
    EXPECT_FALSE(terminationRequested());
}

TEST_F(CommandsTest, TheEyeDropperBecomesTheCursorWithItsTipAsHotSpot) {
    AppDelegate& made = start();
    made.eyeDropperCursor(nullptr);
    const QCursor cursor = made.paperlineWindow->cursor();
    EXPECT_EQ(cursor.hotSpot(), QPoint(0, 0));
    EXPECT_EQ(cursor.pixmap().size(), QSize(32, 32));
}

TEST_F(CommandsTest, StatusSaysThatTheProgramIsReadyBusyOrNotSaving) {
    AppDelegate& made = start();
    const auto said = [&](const char* text) {
        for (const QLabel* label : made.paperlineWindow->findChildren<QLabel*>())
            if (label->text() == QString::fromUtf8(text))
                return true;
        return false;
    };
    window().show();
    EXPECT_TRUE(said("Ready to scan"));
    made.enableToolbatItems(false);
    EXPECT_TRUE(said("Waiting for the scanner…"));
    made.showScanningStatus(3);
    EXPECT_TRUE(said("Scanning page 3…"));
    made.showSavingStatus("/home/kai/Documents/Image_00003.jpg");
    EXPECT_TRUE(said("Saving Image_00003.jpg…"));
    made.enableToolbatItems(true);
    EXPECT_TRUE(said("Ready to scan"));
    made.menuFileSave(nullptr);
    EXPECT_TRUE(said("Pages are shown only, not saved"));
}

TEST_F(CommandsTest, NumbersAndFileNamesKeepTheirOrderInsideArabic) {
    AppDelegate& made = start(7, 26);
    const auto said = [&](const QString& text) {
        for (const QLabel* label : made.paperlineWindow->findChildren<QLabel*>())
            if (label->text() == text)
                return true;
        return false;
    };
    made.showScanningStatus(3);
    EXPECT_TRUE(said(u"جارٍ مسح الصفحة \u20663\u2069…"_qs));
    made.showSavingStatus("/home/kai/Documents/Image_00003.jpg");
    EXPECT_TRUE(said(u"جارٍ حفظ \u2066Image_00003.jpg\u2069…"_qs));
}

TEST_F(CommandsTest, TheEmptyPageAreaGivesWayToPagesAndTheyAreCounted) {
    AppDelegate& made = start();
    const auto emptyTitle = [&]() -> QLabel* {
        for (QLabel* label : made.paperlineWindow->findChildren<QLabel*>())
            if (label->text() == "No pages yet")
                return label;
        return nullptr;
    };
    ASSERT_NE(emptyTitle(), nullptr);
    window().show();
    EXPECT_TRUE(emptyTitle()->isVisible());
    const auto shows = [&](const char* text) {
        return std::ranges::any_of(made.paperlineWindow->findChildren<QLabel*>(),
                                   [text](const QLabel* l) { return l->text() == text; });
    };
    made.cellInfos.resize(2);
    made.reloadMainTable();
    EXPECT_FALSE(emptyTitle()->isVisible());
    EXPECT_TRUE(shows("Pages: 2"));
    made.nonFileSaveImageInTempFolder = 1; // the newest is only a preview
    made.showPageCount();
    EXPECT_TRUE(shows("Pages: 1"));
    made.cellInfos.resize(1);
    made.showPageCount();
    EXPECT_FALSE(emptyTitle()->isVisible());
    EXPECT_FALSE(shows("Pages: 0"));
}

TEST_F(CommandsTest, TheListIsWholeAgainWhenPagesAreSavedAgain) {
    AppDelegate& made = start();
    made.cellInfos.resize(3);
    made.reloadMainTable();
    made.menuFileSave(nullptr);
    made.reloadMainTable(); // a preview came and went
    EXPECT_EQ(made._tableViewMain->model()->rowCount(), 2);
    made.menuFileSave(nullptr);
    EXPECT_EQ(made._tableViewMain->model()->rowCount(), 3);
}

} // namespace
} // namespace paperline
