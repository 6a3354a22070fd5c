// Operations of AppDelegate from process start to the main window, and from its closing to the end.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "output/KeptPages.h"
#include "output/ScratchNames.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "platform/places/Places.h"
#include "viewer/ImageView.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QScreen>
#include <QScrollArea>
#include <QTableView>
#include <QToolBar>

#include <algorithm>

namespace paperline {
namespace {

constexpr uint32_t lastExplicitSource =
    999; // a larger selection means the manager's default source
constexpr int pngItem = 7;
constexpr int focusedColumn = 2; // of the selection table, or its last one when it has fewer
constexpr qsizetype saveSwitchItem = 3;

void removeMenuItem(QMenu* menu, qsizetype index) {
    if (menu != nullptr && index < menu->actions().size())
        menu->removeAction(menu->actions().at(index));
}

// Results of the selection window's modal loop.
constexpr int modalStopped = -1000;

// A window larger than the screen starts at its corner: its title stays in reach.
void centre(QWidget* window) {
    const QRect screen = window->screen()->availableGeometry();
    const QSize room = (screen.size() - window->frameSize()) / 2;
    window->move(screen.topLeft() + QPoint(std::max(0, room.width()), std::max(0, room.height())));
}

Rect rectOf(const QWidget* widget) {
    if (widget == nullptr)
        return {};
    const QRect frame = widget->geometry();
    return {static_cast<double>(frame.x()),
            static_cast<double>(frame.y()),
            static_cast<double>(frame.width()),
            static_cast<double>(frame.height())};
}

} // namespace

AppDelegate* AppDelegate::init() {
    if (gOutputLog == nullptr) {
        static CvOutputLog log;
        gOutputLog = &log;
        log.setDebugLevelAndCreateLogFile();
    }
    TraceScope trace("init");

    gBrandNumber = 0;
    _selectedRaw = -1;
    _fitOrAcutalImage = 1;
    _FloppySwitchON = 1;
    mMenuFileSave = 1;
    gBrandNumber = launchOptions_.brand;
    mResourcePath = resourcePath();
    traceText("init", mResourcePath);
    QApplication::setWindowIcon(QIcon(QString::fromStdString(mResourcePath + "/CPL.png")));

    TwainInit();
    if (selectSpcificSource() != 0) {
        requestTermination();
        traceLine("selectSpcificSource Not TWRC_SUCCESS");
        return nullptr;
    }

    mSourceDSSelect = UINT32_MAX;
    currentPage = 1;
    imageFilePath.clear();
    mCurrentPath = bundlePath();
    mResourcePath = resourcePath();
    getSystemInfo();
    firstFitImage = 0;
    nonFileSaveImageInTempFolder = 0;
    changeThumbnailSelect = 0;
    mNeedSetImage = 1;
    return this;
}

void AppDelegate::applicationWillFinishLaunching() {
    TraceScope trace("applicationWillFinishLaunching");
    const bool hasSaveCommand = brandProfile(gBrandNumber).hasSaveCommand;
    showSaveSwitch(true);

    if (!hasSaveCommand) {
        if (paperlineToolbar != nullptr && paperlineToolbar->actions().size() > saveSwitchItem)
            paperlineToolbar->removeAction(paperlineToolbar->actions().at(saveSwitchItem));
        removeMenuItem(fileMenuSave, 0);
        removeMenuItem(fileMenuSave, 0);
    }
    if (paperlineToolbar != nullptr) { // no user customisation
        paperlineToolbar->setMovable(false);
        paperlineToolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    }

    makeTemporaryFolders();
    cellInfos.clear();
}

void AppDelegate::makeTemporaryFolders() {
    keepPagesOfEarlierRuns(); // those that ended in the middle of a batch
    removeAllButPages(scratchPath(stagingFolderName));
    // A folder that cannot be made shows at the first page that needs it.
    for (const char* name : {scratchRootName, stagingFolderName, listStagingFolderName}) {
        const std::string folder = scratchPath(name);
        if (!createPrivateFolder(folder))
            traceText("temporary folder not made", folder);
    }
}

void AppDelegate::applicationDidFinishLaunching() {
    TraceScope trace("applicationDidFinishLaunching");
    ReadDefaultScannerName();
    SearchAllDS();
    ReadUISettingForLastLanguage();
    initialApplicationUserInterface();
    setFirstUILanguage(1);
    SelectSourceCount = static_cast<uint32_t>(dsArray.size());
    traceValue("applicationDidFinishLaunching - SelectSourceCount",
               static_cast<int32_t>(SelectSourceCount));
    launchAborted = false;

    if (SelectSourceCount == 0) {
        runAlertPanel({.title = localizedString(osLangBundle, "szWarning"),
                       .message = localizedString(osLangBundle, "NOInstallDS"),
                       .informativeText = "",
                       .defaultButton = localizedString(osLangBundle, "Exit")});
        launchAborted = true;
        requestTermination();
        return;
    }
    if (SelectSourceCount > 1)
        showInstalledSourcesChoice();
    else
        openOnlySource();
    if (terminationRequested())
        return;
    if (SelectSourceCount != 1) {
        // The settings now belong to the source chosen in the window.
        getTwiainDSInfo();
        ReadUISetting();
        fixUpSaveFolder();
    }
    showMainWindow();
}

void AppDelegate::loadSettingsOfSelectedSource() {
    getTwiainDSInfo();
    ReadUISetting();
    fixUpSaveFolder();
    initialApplicationUserInterface();
    ReadWriteDSLanguageSetting(1, true);
    ReadWriteDSLanguageSetting(2, false);
}

void AppDelegate::openOnlySource() {
    mSourceDSSelect = 0;
    reloadSourceTable();
    loadSettingsOfSelectedSource();
    if (CheckIdentity(0) == twain::TWRC_SUCCESS)
        return;
    ReadWriteDSLanguageSetting(2, true);
    launchAborted = true;
    showSourceNotOpenedMessage();
    requestTermination();
}

void AppDelegate::showInstalledSourcesChoice() {
    reloadSourceTable();
    mSourceDSDefault = scannerName.empty() ? 0 : CheckIdentityWithScannerName(scannerName);
    if (!launchOptions_.sourceName.empty())
        mSourceDSDefault = CheckIdentityWithScannerName(launchOptions_.sourceName);
    selectSourceRow(mSourceDSDefault);
    loadSettingsOfSelectedSource();

    if (!launchOptions_.commandLine && !runSelectionWindow()) {
        requestTermination(); // cancelled: the settings are still written on the way out
        return;
    }
    // The preselected source gets its own language back before the chosen one takes its place.
    ReadWriteDSLanguageSetting(2, true);
    const uint16_t opened = mSourceDSSelect <= lastExplicitSource ? CheckIdentity(mSourceDSSelect)
                                                                  : CheckDefaultIdentity();
    if (opened == twain::TWRC_SUCCESS)
        return;
    launchAborted = true;
    showSourceNotOpenedMessage();
    requestTermination();
}

void AppDelegate::selectSourceRow(uint32_t row) {
    // The selection change stores the row in mSourceDSSelect; selecting a selected row is no
    // change.
    _tableViewSelectSource->clearSelection();
    _tableViewSelectSource->setStyleSheet("QTableView { gridline-color: blue; }");
    // selectRow finds no column when the interface runs from right to left.
    const QAbstractItemModel* model = _tableViewSelectSource->model();
    const int column = std::min(focusedColumn, model->columnCount() - 1);
    _tableViewSelectSource->setCurrentIndex(model->index(static_cast<int>(row), column));
}

bool AppDelegate::runSelectionWindow() {
    centre(twainSelectSourceWindow);
    const DelayedMessagesHold hold;
    const int result = twainSelectSourceWindow->exec();
    twainSelectSourceWindow->hide();
    return result == modalStopped && !terminationRequested();
}

void AppDelegate::showMainWindow() {
    centre(paperlineWindow);
    paperlineToolbar_FileFormatsCombox->setCurrentIndex(0);
    orgRect = rectOf(mImageView);
    saveRect = orgRect;
    mImageView->setFitorAcutalImage(1);
    fixUpSaveFolder();

    paperlineToolbar_FileFormatsCombox->setCurrentIndex(profileFileformatSelect);
    deleteFolderImage();
    initialApplicationUserInterface();
    if (SelectSourceCount != 1) {
        ReadWriteDSLanguageSetting(1, true);
        ReadWriteDSLanguageSetting(2, false);
    }
    showImageScrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    showImageScrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    cellInfoImages.clear();
    paperlineWindow->setWindowTitle(QString::fromUtf8(brandProfile(gBrandNumber).productName));
    if (!brandProfile(gBrandNumber).offersPng)
        paperlineToolbar_FileFormatsCombox->removeItem(pngItem);

    if (!launchOptions_.commandLine) {
        paperlineWindow->show();
        paperlineWindow->raise();
        paperlineWindow->activateWindow();
    }
    tellKeptPages();
}

void AppDelegate::windowDidLoad() {
    TraceScope trace("windowDidLoad");
    paperlineWindow->setContentsMargins(0, 0, 0, 0); // no border above or below the content
}

void AppDelegate::initialApplicationUserInterface() {
    TraceScope trace("initialApplicationUserInterface");
    loadLanguage(profileLanguage);
    rebuildMenusAndLabels();
}

std::string AppDelegate::applicationFilesDirectory() const {
    TraceScope trace("applicationFilesDirectory");
    return folderOfPath(userDataFolder()) + "/Corvane.Paperline";
}

void AppDelegate::windowWillClose() {
    TraceScope trace("windowWillClose");
    keepStagedPages();
    tellKeptPages();
    removeAllButPages(scratchPath(stagingFolderName));
    requestTermination();
}

void AppDelegate::applicationWillTerminate() {
    TraceScope trace("applicationWillTerminate");
    // A failed launch, one that never began and the command line leave the settings as they are.
    if (launchAborted || mCurrentPath.empty() || launchOptions_.commandLine)
        return;
    writeSettingsAtTermination();
    ReadWriteDSLanguageSetting(2, true);
}

} // namespace paperline
