#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/ui/InterfaceFixture.h"
#include "ui/LanguageTable.h"
#include "ui/MainToolbar.h"
#include "ui/SelectSourceWindow.h"
#include "viewer/ImageView.h"

#include <QKeyEvent>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>

#include <cstring>
#include <set>

namespace paperline {
namespace {

class MainWindowTest : public InterfaceFixture {
protected:
    QWidget* button(QAction* action) { return toolbarButton(controller->paperlineToolbar, action); }
    // The widgets that Tab reaches, in its order.
    std::vector<QWidget*> tabOrder() {
        const std::vector<QWidget*> wanted{button(controller->paperlineToolbar_Setup),
                                           button(controller->paperlineToolbar_Scan),
                                           controller->paperlineToolbar_FileFormatsCombox,
                                           button(controller->paperlineToolbar_FileFormat),
                                           button(controller->paperlineToolbar_FolderSelect),
                                           controller->currentSaveFolder,
                                           button(controller->paperlineToolbar_OpenDlg),
                                           button(controller->paperlineToolbar_FitPage),
                                           button(controller->paperlineToolbar_ActualPage),
                                           controller->_tableViewMain,
                                           controller->showImageScrollView};
        return wanted;
    }
};

TEST_F(MainWindowTest, FillsEveryOutlet) {
    const AppDelegate& made = start();
    const void* outlets[]{made._window,
                          made.paperlineWindow,
                          made.paperlineSplitView,
                          made.showImageScrollView,
                          made.thumbnailView,
                          made.mImageView,
                          made._tableViewMain,
                          made._imageViewMain,
                          made._textFieldMain,
                          made.mWindow,
                          made.currentSaveFolder,
                          made.paperlineToolbar,
                          made.paperlineToolbar_Setup,
                          made.paperlineToolbar_Scan,
                          made.paperlineToolbar_OpenDlg,
                          made.paperlineToolbar_FileFormat,
                          made.paperlineToolbar_FolderSelect,
                          made.paperlineToolbar_FitPage,
                          made.paperlineToolbar_ActualPage,
                          made.paperlineToolbar_CurrentForder,
                          made.paperlineToolbar_FileFormatsCombox,
                          made.fileMenuItem,
                          made.fileSave,
                          made.fileSetup,
                          made.fileScan,
                          made.fileQuit,
                          made.fileSelectLangage,
                          made.windowMini,
                          made.systemAbout,
                          made.systemHideCPL,
                          made.systemHideOthers,
                          made.systemShowAll,
                          made.systemQuitCPL,
                          made.fileMenuLanguage,
                          made.fileMenuSave,
                          made.fileNumeWindow,
                          made.subMenuItemLanguage,
                          made.subMenuItemFileOption,
                          made.twainSelectSourceWindow,
                          made._tableViewSelectSource,
                          made._tableViewTWAIN,
                          made.twainSelectSourceScannerType,
                          made.twainSelectSourceOKBtn,
                          made.twainSelectSourceCancelBtn};
    EXPECT_EQ(sizeof(InterfaceOutlets), sizeof outlets); // none is forgotten here
    for (const void* outlet : outlets)
        EXPECT_NE(outlet, nullptr);
}

TEST_F(MainWindowTest, ToolbarItemsStandInTheirOrder) {
    const AppDelegate& made = start();
    const QList<QAction*> items = made.paperlineToolbar->actions();
    ASSERT_EQ(items.size(), 9);
    EXPECT_EQ(items.at(0), made.paperlineToolbar_Setup);
    EXPECT_EQ(items.at(1), made.paperlineToolbar_Scan);
    EXPECT_TRUE(made.paperlineToolbar->widgetForAction(items.at(2))
                    ->isAncestorOf(made.paperlineToolbar_FileFormatsCombox));
    EXPECT_EQ(items.at(3), made.paperlineToolbar_FileFormat);
    EXPECT_EQ(items.at(4), made.paperlineToolbar_FolderSelect);
    EXPECT_EQ(items.at(5), made.paperlineToolbar_CurrentForder);
    EXPECT_EQ(items.at(6), made.paperlineToolbar_OpenDlg);
    EXPECT_EQ(items.at(7), made.paperlineToolbar_FitPage);
    EXPECT_EQ(items.at(8), made.paperlineToolbar_ActualPage);
}

TEST_F(MainWindowTest, FormatsStandInTheOrderOfTheirCodes) {
    const QComboBox* list = start().paperlineToolbar_FileFormatsCombox;
    QStringList names;
    for (int i = 0; i < list->count(); ++i)
        names.append(list->itemText(i));
    EXPECT_EQ(names,
              QStringList(
                  {"BMP", "JPG", "GIF", "PDF", "Multi-Page PDF", "TIF", "Multi-Page TIF", "PNG"}));
}

TEST_F(MainWindowTest, EveryToolbarButtonHasItsPicture) {
    const AppDelegate& made = start();
    for (const QAction* item : {made.paperlineToolbar_Setup,
                                made.paperlineToolbar_Scan,
                                made.paperlineToolbar_FileFormat,
                                made.paperlineToolbar_FolderSelect,
                                made.paperlineToolbar_OpenDlg,
                                made.paperlineToolbar_FitPage,
                                made.paperlineToolbar_ActualPage})
        EXPECT_FALSE(item->icon().isNull()) << item->text().toStdString();
}

TEST_F(MainWindowTest, EveryControlHasANameAndADescription) {
    for (int32_t brand : {7, 2}) {
        start(static_cast<uint32_t>(brand));
        for (const QWidget* control : tabOrder()) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className();
            EXPECT_FALSE(control->accessibleDescription().isEmpty())
                << control->accessibleName().toStdString();
        }
    }
}

TEST_F(MainWindowTest, EveryToolbarControlHasATip) {
    const AppDelegate& made = start();
    for (QAction* item : made.paperlineToolbar->actions()) {
        const QWidget* control = made.paperlineToolbar->widgetForAction(item);
        if (item == made.paperlineToolbar_CurrentForder)
            control = made.currentSaveFolder;
        else if (control->isAncestorOf(made.paperlineToolbar_FileFormatsCombox))
            control = made.paperlineToolbar_FileFormatsCombox;
        EXPECT_FALSE(control->toolTip().isEmpty()) << control->accessibleName().toStdString();
    }
}

TEST_F(MainWindowTest, NamesFollowTheLanguage) {
    AppDelegate& made = start();
    made.SetToolbarItemAndMenuUI(echoingBundle());
    EXPECT_EQ(button(made.paperlineToolbar_Scan)->accessibleName(), "<Scan>");
    EXPECT_EQ(made._tableViewMain->accessibleName(), "<PageListName>");
    EXPECT_EQ(made.currentSaveFolder->accessibleName(), "<SaveFolderName>");
}

TEST_F(MainWindowTest, TabWalksFromTheToolbarToTheListAndThePage) {
    start();
    window().show();
    QApplication::setActiveWindow(&window());
    controller->cellInfos.resize(3); // Tab leaves the list, it does not walk in it
    controller->reloadMainTable();
    const std::vector<QWidget*> order = tabOrder();
    order.front()->setFocus();
    for (size_t i = 0; i + 1 < order.size(); ++i) {
        ASSERT_EQ(QApplication::focusWidget(), order[i]) << i;
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(QApplication::focusWidget(), &tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), order.back());
}

TEST_F(MainWindowTest, ShortcutsAreThereAndNoneTwice) {
    const AppDelegate& made = start();
    std::set<QString> keys;
    for (const QAction* item : {made.fileSave,
                                made.fileSetup,
                                made.fileScan,
                                made.fileQuit,
                                made.windowMini,
                                made.systemHideCPL,
                                made.paperlineToolbar_FitPage,
                                made.paperlineToolbar_ActualPage}) {
        EXPECT_FALSE(item->shortcut().isEmpty()) << item->text().toStdString();
        EXPECT_TRUE(keys.insert(item->shortcut().toString()).second)
            << item->shortcut().toString().toStdString();
    }
}

TEST_F(MainWindowTest, EntriesOfOneMenuHaveDifferentMnemonicsInEveryLanguage) {
    for (const LanguageRow& row : languageTable) {
        start(7, static_cast<int32_t>(&row - languageTable.data()));
        QMenuBar* bar = window().menuBar();
        QList<QList<QAction*>> menus{bar->actions()};
        for (const QMenu* menu : bar->findChildren<QMenu*>())
            menus.append(menu->actions());
        for (const QList<QAction*>& entries : menus) {
            std::set<QString> letters;
            for (const QAction* item : entries) {
                const QString letter = QKeySequence::mnemonic(item->text()).toString();
                if (letter.isEmpty())
                    continue;
                EXPECT_TRUE(letters.insert(letter).second)
                    << row.menuName << ": " << item->text().toStdString();
            }
        }
    }
}

TEST_F(MainWindowTest, AnActualPageShowsItsTopLeftCornerInBothDirections) {
    const std::string path = folder + "/page.png";
    QImage page(1500, 1800, QImage::Format_RGB32);
    page.fill(Qt::white);
    ASSERT_TRUE(page.save(QString::fromStdString(path)));
    for (const int32_t language : {0, 26}) {
        AppDelegate& made = start(7, language);
        window().show();
        made.cellInfos.push_back({.title = {},
                                  .subtitle = "page",
                                  .image = page.scaled(10, 12),
                                  .imageFullPath = path,
                                  .imageIndex = 0});
        made.reloadMainTable();
        made.selectLastRow();
        made.paperlineToolbar_ActualPage->trigger();
        QApplication::processEvents();
        EXPECT_EQ(made.mImageView->width(), 1515);
        EXPECT_EQ(made.mImageView->pos(), QPoint(0, 0)) << language;
    }
}

TEST_F(MainWindowTest, ALongNameInTheStatusLineIsShortenedInTheMiddle) {
    AppDelegate& made = start();
    window().show();
    made.cellInfos.resize(3);
    made.reloadMainTable();
    const std::string front = "/home/kai/" + std::string(300, 'n');
    made.showSavingStatus(front + "_00001.jpg");
    const QList<QLabel*> labels = window().statusBar()->findChildren<QLabel*>();
    ASSERT_EQ(labels.size(), 2);
    QLabel* status = labels.first();
    EXPECT_TRUE(status->text().contains("_00001.jpg")); // screen readers get all of it
    const QImage first = status->grab().toImage();
    made.showSavingStatus(front + "_00002.jpg");
    EXPECT_NE(status->grab().toImage(), first);
    // The number of pages keeps its place beside it.
    const QLabel* count = labels.last();
    EXPECT_EQ(count->text(), "Pages: 3");
    EXPECT_LE(count->mapTo(&window(), QPoint(count->width(), 0)).x(), window().width());
    EXPECT_GE(count->width(), count->sizeHint().width());
}

TEST_F(MainWindowTest, ARememberedSizeIsNeverTooSmallForItsControls) {
    ASSERT_TRUE(createFolderWithParents(userDataFolder()));
    const std::string file = userDataFolder() + "/window.ini";
    const std::string text = "[MainWindow]\nsize=@Size(40 30)\n";
    ASSERT_TRUE(writeFile(file, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}));
    start();
    EXPECT_GE(window().width(), window().minimumSizeHint().width());
    EXPECT_GE(window().height(), window().minimumSizeHint().height());
    removePath(file);
}

TEST_F(MainWindowTest, ClosingItEndsTheApplication) {
    start();
    window().show();
    window().close();
    EXPECT_TRUE(terminationRequested());
    EXPECT_FALSE(window().isVisible());
}

TEST_F(MainWindowTest, ClosingItDuringATransferWaitsForTheTransfersEnd) {
    start();
    window().show();
    {
        const DelayedMessagesHold transfer;
        window().close();
        for (int i = 0; i < 10; ++i)
            QApplication::processEvents();
        EXPECT_FALSE(terminationRequested());
        EXPECT_TRUE(window().isVisible());
    }
    for (int i = 0; i < 100 && !terminationRequested(); ++i)
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    EXPECT_TRUE(terminationRequested());
}

TEST_F(MainWindowTest, RemembersItsSize) {
    start();
    window().resize(780, 620);
    window().show();
    window().close();
    start();
    EXPECT_EQ(window().size(), QSize(780, 620));
    removePath(userDataFolder() + "/window.ini");
    start();
    EXPECT_EQ(window().size(), QSize(1024, 678));
}

TEST_F(MainWindowTest, RemembersThatItFilledTheScreenAndItsSizeBefore) {
    start();
    window().resize(780, 620);
    window().show();
    window().setWindowState(Qt::WindowMaximized);
    QApplication::processEvents();
    window().close();
    start();
    EXPECT_TRUE(window().isMaximized());
    window().setWindowState(Qt::WindowNoState);
    EXPECT_EQ(window().size(), QSize(780, 620));
    removePath(userDataFolder() + "/window.ini");
}

TEST_F(MainWindowTest, ARememberedSizeIsCutToTheScreen) {
    start();
    window().resize(9000, 8000);
    window().show();
    window().close();
    start();
    const QSize screen = window().screen()->availableSize();
    EXPECT_LE(window().width(), screen.width());
    EXPECT_LE(window().height(), screen.height());
    removePath(userDataFolder() + "/window.ini");
}

class SelectionWindowTest : public InterfaceFixture {
protected:
    static TWAIN_INFO source(const char* name) {
        TWAIN_INFO info;
        std::strncpy(info.productName.data(), name, info.productName.size() - 1);
        return info;
    }
    void offerTwo() {
        controller->dsArray = {source("Lumo 10"), source("Software Scanner")};
        controller->SelectSourceCount = 2;
        controller->reloadSourceTable();
    }
};

TEST_F(SelectionWindowTest, ListsTheSourcesByProductName) {
    const AppDelegate& made = start();
    offerTwo();
    const QAbstractItemModel* model = made._tableViewSelectSource->model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->columnCount(), 1);
    EXPECT_EQ(model->index(1, 0).data(Qt::ToolTipRole).toString(), "Software Scanner");
    EXPECT_EQ(model->index(0, 0).data().toString(), "Lumo 10");
    EXPECT_EQ(model->index(1, 0).data().toString(), "Software Scanner");
}

TEST_F(SelectionWindowTest, SelectingARowStoresItsIndex) {
    const AppDelegate& made = start();
    offerTwo();
    made._tableViewSelectSource->selectRow(1);
    EXPECT_EQ(made.mSourceDSSelect, 1u);
    made._tableViewSelectSource->selectRow(0);
    EXPECT_EQ(made.mSourceDSSelect, 0u);
}

TEST_F(SelectionWindowTest, ButtonsEndItWithTheirResults) {
    const AppDelegate& made = start();
    offerTwo();
    made.twainSelectSourceWindow->show();
    made.twainSelectSourceOKBtn->click();
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1000);
    made.twainSelectSourceWindow->show();
    made.twainSelectSourceCancelBtn->click();
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1001);
}

TEST_F(SelectionWindowTest, EscapeAndClosingCountAsCancel) {
    const AppDelegate& made = start();
    offerTwo();
    made.twainSelectSourceWindow->show();
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(made.twainSelectSourceWindow, &escape);
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1001);
    EXPECT_FALSE(made.twainSelectSourceWindow->isVisible());
    made.twainSelectSourceWindow->setResult(0);
    made.twainSelectSourceWindow->show();
    made.twainSelectSourceWindow->close();
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1001);
}

TEST_F(SelectionWindowTest, EnterCountsAsOk) {
    const AppDelegate& made = start();
    offerTwo();
    made.twainSelectSourceWindow->show();
    EXPECT_TRUE(made.twainSelectSourceOKBtn->isDefault());
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(made.twainSelectSourceWindow, &enter);
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1000);
}

TEST_F(SelectionWindowTest, ASecondClickOnARowCountsAsOk) {
    const AppDelegate& made = start();
    offerTwo();
    made.twainSelectSourceWindow->show();
    emit made._tableViewSelectSource->doubleClicked(
        made._tableViewSelectSource->model()->index(1, 0));
    EXPECT_EQ(made.twainSelectSourceWindow->result(), -1000);
}

TEST_F(SelectionWindowTest, ItsListHasANameForScreenReaders) {
    AppDelegate& made = start();
    made.setFirstUILanguage(1);
    EXPECT_EQ(made._tableViewSelectSource->accessibleName(), "Installed scanners");
    EXPECT_FALSE(made._tableViewSelectSource->accessibleDescription().isEmpty());
}

} // namespace
} // namespace paperline
