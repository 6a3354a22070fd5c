// Commands of the toolbar and the File menu.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "base/FileFormats.h"
#include "platform/desktop/MainLoop.h"
#include "ui/MainWindow.h"
#include "ui/SaveFolderTextField.h"
#include "ui/ThemedIcon.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QMainWindow>
#include <QPixmap>

namespace paperline {
namespace {

void setEnabled(QAction* item, bool enabled) {
    if (item != nullptr)
        item->setEnabled(enabled);
}

const char* saveSwitchPicture(bool hasSaveCommand, bool on) {
    if (hasSaveCommand)
        return on ? "Contents/Resources/Floppy.png" : "Contents/Resources/Floppy_PushDown.png";
    return on ? "Contents/Resources/CollapsePagesPanel.png"
              : "Contents/Resources/CollapsePagesPanel_PushDown.png";
}

} // namespace

void AppDelegate::enableToolbatItems(bool enabled) {
    TraceScope trace("enableToolbatItems");
    for (QAction* item : {paperlineToolbar_Setup,
                          paperlineToolbar_Scan,
                          paperlineToolbar_FileFormat,
                          paperlineToolbar_FolderSelect,
                          paperlineToolbar_OpenDlg,
                          paperlineToolbar_FitPage,
                          paperlineToolbar_ActualPage,
                          fileMenuItem,
                          subMenuItemLanguage,
                          subMenuItemFileOption})
        setEnabled(item, enabled);
    enableSavingControls(mMenuFileSave != 0 && mScanSetup != 1);
    if (enabled) {
        showIdleStatus();
        return;
    }
    showStatus("StatusWaiting");
    // The event loop stands still until the scanner answers.
    if (paperlineWindow != nullptr && paperlineWindow->isVisible())
        repaintWithoutInput();
}

void AppDelegate::enableSavingControls(bool enabled) {
    if (paperlineToolbar_FileFormatsCombox != nullptr)
        paperlineToolbar_FileFormatsCombox->setEnabled(enabled);
    if (currentSaveFolder != nullptr)
        currentSaveFolder->setEnabled(enabled);
}

void AppDelegate::menuFileScan(QObject* sender) {
    TraceScope trace("menuFileScan");
    toolBarItemScan(sender);
}

void AppDelegate::menuFileSetup(QObject* sender) {
    TraceScope trace("menuFileSetup");
    toolBarItemSetup(sender);
}

void AppDelegate::menuFileQuit(QObject*) {
    TraceScope trace("menuFileQuit");
    requestTermination();
}

void AppDelegate::menuFileSelectLanguage(QObject*) {
    TraceScope trace("menuFileSelectLanguage");
}

void AppDelegate::toolBarItemFileFormat(QObject*) {
    TraceScope trace("toolBarItemFileFormat");
    menuFileSave(nullptr);
}

void AppDelegate::menuFileSave(QObject*) {
    TraceScope trace("menuFileSave");
    _FloppySwitchON = _FloppySwitchON != 0 ? 0 : 1;
    const bool on = _FloppySwitchON != 0;
    showSaveSwitch(on);
    enableSavingControls(on);

    mMenuFileSave = mMenuFileSave != 0 ? 0 : 1;
    if (fileSave != nullptr)
        fileSave->setChecked(mMenuFileSave != 0);
    if (on && !cellInfos.empty())
        reloadMainTable(); // lists the newest page again
    layOutWindow();
    showIdleStatus();
}

void AppDelegate::showSaveSwitch(bool on) {
    if (paperlineToolbar_FileFormat == nullptr)
        return;
    const bool hasSaveCommand = brandProfile(gBrandNumber).hasSaveCommand;
    paperlineToolbar_FileFormat->setIcon(
        themedIcon(mCurrentPath + "/" + saveSwitchPicture(hasSaveCommand, on)));
}

void AppDelegate::layOutWindow() {
    auto* window = qobject_cast<MainWindow*>(paperlineWindow);
    if (window == nullptr)
        return;
    window->layOutPanes(!shouldHideDividerAtIndex(0));
    if (cellInfos.empty() || mImageView == nullptr)
        return;
    const auto lastRow = static_cast<int32_t>(cellInfos.size()) - 1;
    const int32_t row = _selectedRaw >= 0 && _selectedRaw <= lastRow ? _selectedRaw : lastRow;
    showRow(static_cast<uint32_t>(row));
}

void AppDelegate::toolBarItemFileFormatSelect(int index) {
    TraceScope trace("toolBarItemFileFormatSelect");
    profileFileformatSelect = index >= formatJpeg && index <= formatPng ? index : formatBmp;
}

void AppDelegate::eyeDropperCursor(QObject*) {
    TraceScope trace("eyeDropperCursor");
    const QPixmap picture(QString::fromStdString(mResourcePath + "/eyedropper.png"));
    if (paperlineWindow != nullptr && !picture.isNull())
        paperlineWindow->setCursor(QCursor(picture, 0, 0));
}

} // namespace paperline
