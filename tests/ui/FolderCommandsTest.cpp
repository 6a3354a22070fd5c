#include "platform/files/Files.h"
#include "tests/ui/InterfaceFixture.h"
#include "ui/MenuText.h"

#include <optional>

namespace paperline {
namespace {

class FolderCommandsTest : public InterfaceFixture {
protected:
    // The chooser answers with this folder and remembers where it was to start.
    void answerWith(std::optional<std::string> chosen) {
        desktop().chooseFolder = [this, chosen](const std::string& title,
                                                const std::string& startFolder) {
            titled = title;
            startedAt = startFolder;
            return chosen;
        };
    }
    std::string fieldText() { return controller->currentSaveFolder->folderText(); }

    std::string startedAt = "never opened";
    std::string titled;
};

TEST_F(FolderCommandsTest, ChoosingAFolderCarriesTheLeafNameOver) {
    AppDelegate& made = start();
    made.currentSaveFolder->setFolderText("/home/kai/Documents/Invoices");
    answerWith("/Volumes/Disk/Scans");
    made.paperlineToolbar_FolderSelect->trigger();
    EXPECT_EQ(fieldText(), "/Volumes/Disk/Scans/Invoices");
    EXPECT_EQ(made.profileFolderName, "/Volumes/Disk/Scans/Invoices");
    EXPECT_EQ(made.saveImageName, "Invoices");
}

TEST_F(FolderCommandsTest, ChoosingAFolderWhileTheFieldEndsInASlashAppendsImage) {
    AppDelegate& made = start();
    made.currentSaveFolder->setFolderText("/home/kai/Documents/");
    answerWith("/Volumes/Disk/Scans");
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(fieldText(), "/Volumes/Disk/Scans/Image");
    EXPECT_EQ(made.saveImageName, "Image");
}

TEST_F(FolderCommandsTest, AScannersMessagesWaitWhileTheChooserIsOpen) {
    AppDelegate& made = start();
    bool held = false;
    desktop().chooseFolder = [&held](const std::string&, const std::string&) {
        held = delayedMessagesAreHeld();
        return std::optional<std::string>();
    };
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_TRUE(held);
    EXPECT_FALSE(delayedMessagesAreHeld());
}

TEST_F(FolderCommandsTest, ALongFolderShowsFromItsStart) {
    AppDelegate& made = start();
    window().show();
    made.currentSaveFolder->setFolderText("/home/kai/" + std::string(400, 'n'));
    EXPECT_EQ(made.currentSaveFolder->cursorPosition(), 0);
}

TEST_F(FolderCommandsTest, CancellingTheChooserChangesTheNameOnly) {
    AppDelegate& made = start();
    made.currentSaveFolder->setFolderText("/home/kai/Documents/Invoices");
    made.profileFolderName = "as before";
    answerWith(std::nullopt);
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(fieldText(), "/home/kai/Documents/Invoices");
    EXPECT_EQ(made.profileFolderName, "as before");
    EXPECT_EQ(made.saveImageName, "Invoices");
}

TEST_F(FolderCommandsTest, WithoutNamesFromTheFieldTheChosenFolderStandsAlone) {
    AppDelegate& made = start();
    made.SelectFolderAutoDetectFlag = 0;
    made.saveImageName = "kept";
    made.currentSaveFolder->setFolderText("/home/kai/Documents/Invoices");
    answerWith("/Volumes/Disk/Scans");
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(fieldText(), "/Volumes/Disk/Scans");
    EXPECT_EQ(made.saveImageName, "kept");
}

TEST_F(FolderCommandsTest, TheChooserStartsWherePagesGoOrAtTheNearestFolderAbove) {
    AppDelegate& made = start();
    answerWith(std::nullopt);
    made.currentSaveFolder->setFolderText(folder + "/Image");
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(startedAt, folder);
    EXPECT_EQ(titled, "Choose a Save Folder");
    made.currentSaveFolder->setFolderText(folder + "/not/there/yet/Image");
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(startedAt, folder);
    made.currentSaveFolder->setFolderText("");
    made.toolBarItemFolderSelect(nullptr);
    EXPECT_EQ(startedAt, "");
}

TEST_F(FolderCommandsTest, OpeningTheFolderShowsWherePagesReallyGo) {
    AppDelegate& made = start();
    std::string opened;
    desktop().openFolder = [&opened](const std::string& path) { opened = path; };
    ASSERT_TRUE(createFolder(folder + "/Image")); // the odd one that a scan makes
    made.currentSaveFolder->setFolderText(folder + "/Image");
    made.paperlineToolbar_OpenDlg->trigger();
    EXPECT_EQ(opened, folder);
    made.currentSaveFolder->setFolderText(folder + "/Image/");
    made.openSaveFolder(nullptr);
    EXPECT_EQ(opened, folder + "/Image/");
}

TEST_F(FolderCommandsTest, EditingTheFieldLeavingItAndEnterChangeNothing) {
    AppDelegate& made = start();
    made.profileFolderName = "/home/kai/Documents/Image";
    made.saveImageName = "Image";
    made.currentSaveFolder->setFolderText("/elsewhere/Name");
    emit made.currentSaveFolder->textEdited("/elsewhere/Name");
    emit made.currentSaveFolder->returnPressed();
    emit made.currentSaveFolder->editingFinished();
    EXPECT_EQ(made.profileFolderName, "/home/kai/Documents/Image");
    EXPECT_EQ(made.saveImageName, "Image");
    EXPECT_TRUE(made.currentSaveFolder->textShouldEndEditing());
}

TEST_F(FolderCommandsTest, TheOthersSubmenuIsSecondAndHoldsTheOneOption) {
    AppDelegate& made = start();
    EXPECT_EQ(titles(made.fileMenuLanguage), QStringList({"Language", "Others"}));
    EXPECT_EQ(made.fileMenuLanguage->actions().at(1), made.subMenuItemFileOption);
    const QMenu* others = made.subMenuItemFileOption->menu();
    ASSERT_EQ(others->actions().size(), 1);
    const QAction* option = others->actions().constFirst();
    EXPECT_EQ(option->data().toString(), "ShowInFinder");
    EXPECT_TRUE(option->shortcut().isEmpty());
    EXPECT_FALSE(option->isChecked());
}

TEST_F(FolderCommandsTest, TheOptionsMarkFollowsTheSettingWhenBuilt) {
    AppDelegate& made = start();
    made.profileShowInFinder = 1;
    made.rebuildOptionsMenu();
    EXPECT_TRUE(made.subMenuItemFileOption->menu()->actions().constFirst()->isChecked());
}

TEST_F(FolderCommandsTest, ChoosingTheOptionTurnsMarkAndSetting) {
    AppDelegate& made = start();
    QAction* option = made.subMenuItemFileOption->menu()->actions().constFirst();
    option->trigger();
    EXPECT_TRUE(option->isChecked());
    EXPECT_EQ(made.profileShowInFinder, 1);
    option->trigger();
    EXPECT_FALSE(option->isChecked());
    EXPECT_EQ(made.profileShowInFinder, 0);
    made.showInFinder(nullptr);
    EXPECT_TRUE(option->isChecked());
    EXPECT_EQ(made.profileShowInFinder, 1);
}

TEST_F(FolderCommandsTest, TheOptionIsFoundByItsTitleInTheLanguageInForce) {
    AppDelegate& made = start();
    QAction* option = made.subMenuItemFileOption->menu()->actions().constFirst();
    option->setText("Another title");
    made.showInFinder(nullptr);
    EXPECT_FALSE(option->isChecked());
    EXPECT_EQ(made.profileShowInFinder, 0);
}

} // namespace
} // namespace paperline
