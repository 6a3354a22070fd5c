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
#include "viewer/PixelConversion.h"

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

// A larger selection means the default source of the manager.
constexpr uint32_t lastExplicitSource = 999;
constexpr int pngItem = 7;
constexpr int focusedColumn = 2; // of the selection table, as far as it has so many
constexpr qsizetype saveSwitchItem = 3;

void removeMenuItem(QMenu* menu, qsizetype index) {
    if (menu != nullptr && index < menu->actions().size())
        menu->removeAction(menu->actions().at(index));
}

// A window larger than the screen begins at the screen's corner, so that its title can be reached.
void centre(QWidget* window) {
    const QRect screen = window->screen()->availableGeometry();
    const QSize room = (screen.size() - window->frameSize()) / 2;
    window->move(screen.topLeft() + QPoint(std::max(0, room.width()), std::max(0, room.height())));
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
    keepPagesOfEarlierRuns();
    removeAllButPages(scratchPath(stagingFolderName));
    // A missing folder is reported with the first page that needs it.
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
        // Settings are kept per source, and another one may be selected now.
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
    // The default source: the one on the command line, else the one used last, else the first.
    mSourceDSDefault = scannerName.empty() ? 0 : CheckIdentityWithScannerName(scannerName);
    if (!launchOptions_.sourceName.empty())
        mSourceDSDefault = CheckIdentityWithScannerName(launchOptions_.sourceName);
    selectSourceRow(mSourceDSDefault);
    loadSettingsOfSelectedSource();

    if (!launchOptions_.commandLine && !runSelectionWindow()) {
        requestTermination(); // settings are still written
        return;
    }
    // Gives the preselected source its own language back; another one may be selected now.
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
    // mSourceDSSelect is set by the selection's change, so it has to change.
    _tableViewSelectSource->clearSelection();
    _tableViewSelectSource->setStyleSheet("QTableView { gridline-color: blue; }");
    // selectRow() does nothing in a right-to-left interface.
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
    orgRect = rectOf(mImageView->geometry());
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
    paperlineWindow->setContentsMargins(0, 0, 0, 0);
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
    // Settings are written only by a window whose launch succeeded.
    if (launchAborted || mCurrentPath.empty() || launchOptions_.commandLine)
        return;
    writeSettingsAtTermination();
    ReadWriteDSLanguageSetting(2, true);
}

} // namespace paperline
