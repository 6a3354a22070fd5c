// Starts a scan or the source's settings dialog, and handles the source's messages.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"
#include "platform/host/Host.h"
#include "twain/SourceCallback.h"
#include "twain/TWAINHandler.h"
#include "ui/SaveFolderText.h"
#include "ui/SaveFolderTextField.h"

namespace paperline {
namespace {

constexpr int32_t nativeTransfer = 1;
constexpr int32_t memoryTransfer = 2;
constexpr int32_t fileTransfer = 3;
constexpr int32_t noDisplayImageSuppressed = 2;

enum class Interface { none, acquire, settingsOnly };

TW_USERINTERFACE userInterfaceRecord(Interface interface) {
    TW_USERINTERFACE record{};
    record.ShowUI = interface == Interface::none ? 0 : 1;
    return record;
}

uint16_t enableSource(Interface interface) {
    beginSession();
    TW_USERINTERFACE record = userInterfaceRecord(interface);
    const int32_t code = interface == Interface::settingsOnly
                             ? gTWAINHandler->EnableDSUIOnly(&record)
                             : gTWAINHandler->EnableDS(&record);
    return static_cast<uint16_t>(code);
}

// Opens and enables the source. Shows a message when it does not open; closes it again when it
// cannot be enabled.
uint16_t openAndEnable(AppDelegate& controller, Interface interface) {
    const auto opened = static_cast<uint16_t>(gTWAINHandler->OpenDS());
    if (opened != twain::TWRC_SUCCESS) {
        controller.showSourceNotOpenedMessage();
        return opened;
    }
    const uint16_t enabled = enableSource(interface);
    if (enabled != twain::TWRC_SUCCESS)
        gTWAINHandler->CloseDS();
    return enabled;
}

uint16_t acquire(AppDelegate& controller, int32_t mechanism) {
    controller.mNativeTransfer = mechanism;
    controller.settingsDialogOpen = false;
    const uint16_t code = openAndEnable(controller, Interface::acquire);
    if (code != twain::TWRC_SUCCESS)
        controller.endScan();
    return code;
}

bool createSaveFolder(const std::string& folder) {
    const bool created = createFolderWithParents(folder);
    if (created)
        traceLine("Success!");
    else if (isTracing())
        traceLine(("Error! The folder cannot be created: " + folder).c_str());
    return created;
}

// The text is the save folder and, after the last "/", the template of file names.
void takeFolderAndTemplate(AppDelegate& controller) {
    const std::string& folder = controller.profileFolderName;
    if (!folder.empty() && folder.back() == '/') {
        if (!fileExists(folder))
            createSaveFolder(folder);
        controller.saveImageName.clear();
        controller.createFolerprofileFolderName = folder;
        return;
    }
    controller.saveImageName = lastPathComponent(folder);
    controller.createFolerprofileFolderName = folderOfPath(folder);
    controller.updateDateTimeInfo2();
}

std::string folderFieldText(const AppDelegate& controller) {
    return controller.currentSaveFolder != nullptr
               ? controller.currentSaveFolder->text().toStdString()
               : std::string();
}

void setFolderFieldText(AppDelegate& controller, const std::string& text) {
    if (controller.currentSaveFolder != nullptr)
        controller.currentSaveFolder->setText(QString::fromStdString(text));
}

// The save folder is the field's text, or the stored folder for an empty field; always absolute,
// never below the working directory.
void syncFolderWithField(AppDelegate& controller) {
    const std::string text = folderFieldText(controller);
    controller.profileFolderName =
        absoluteFolderText(text.empty() ? controller.profileFolderName : text, host().homeFolder());
    if (controller.profileFolderName != text)
        setFolderFieldText(controller, controller.profileFolderName);
}

// On purpose a folder for the whole text, template included.
void createTypedFolder(AppDelegate& controller) {
    traceLine("current profileFolderName fileExistsAtPath?");
    if (!fileExists(controller.profileFolderName)) {
        traceLine("current profileFolderName not Exists");
        traceLine("createDirectoryAtPath tmpFolderName");
        if (!createFolderWithParents(controller.profileFolderName))
            setFolderFieldText(controller, controller.profileFolderName);
        else if (controller.currentSaveFolder != nullptr)
            controller.profileFolderName = folderFieldText(controller);
    }
    traceLine("current profileFolderName fileExistsAtPath End");
}

} // namespace

void AppDelegate::toolBarItemScan(QObject*) {
    TraceScope trace("toolBarItemScan");
    if (gNoDisplayImageShown != noDisplayImageSuppressed)
        gNoDisplayImageShown = 0;
    syncFolderWithField(*this);
    if (SelectFolderAutoDetectFlag != 0) {
        takeFolderAndTemplate(*this);
    } else {
        if (!isWritable(profileFolderName)) {
            showNotCorrectFolderMessage();
            endScan();
            return;
        }
        ReadDefaultSaveImageName();
    }
    createTypedFolder(*this);
    mScanSetup = 1;
    enableToolbatItems(false);
    nonUI();
}

void AppDelegate::toolBarItemSetup(QObject*) {
    TraceScope trace("toolBarItemSetup");
    mScanSetup = 1;
    enableToolbatItems(false);
    if (setupUI() == twain::TWRC_SUCCESS) {
        showStatus("StatusSetup");
        return;
    }
    showSetupFailureMessage();
    endScan();
}

uint16_t AppDelegate::nonUI() {
    TraceScope trace("nonUI");
    mNativeTransfer = memoryTransfer;
    settingsDialogOpen = false;
    const auto opened = static_cast<uint16_t>(gTWAINHandler->OpenDS());
    if (opened != twain::TWRC_SUCCESS) {
        showSourceNotOpenedMessage();
        endScan();
        return opened;
    }
    currentMultiPage = 1;
    const uint16_t enabled = enableSource(Interface::none);
    if (enabled == twain::TWRC_SUCCESS)
        return twain::TWRC_SUCCESS;

    TW_USERINTERFACE record = userInterfaceRecord(Interface::none);
    gTWAINHandler->DisableDS(&record);
    gTWAINHandler->CloseDS();
    if (enabled != twain::TWRC_CANCEL)
        showSourceNotOpenedMessage();
    endScan();
    return twain::TWRC_SUCCESS; // also after a failed enable
}

uint16_t AppDelegate::setupUI() {
    TraceScope trace("setupUI");
    settingsDialogOpen = true; // before the call: the source may call back inside it
    const uint16_t code = openAndEnable(*this, Interface::settingsOnly);
    if (code != twain::TWRC_SUCCESS)
        settingsDialogOpen = false;
    return code;
}

uint16_t AppDelegate::aquireNativeXfer() {
    TraceScope trace("aquireNativeXfer");
    return acquire(*this, nativeTransfer);
}

uint16_t AppDelegate::aquireMemoryXfer() {
    TraceScope trace("aquireMemoryXfer");
    return acquire(*this, memoryTransfer);
}

uint16_t AppDelegate::aquireFileXfer() {
    TraceScope trace("aquireFileXfer");
    return acquire(*this, fileTransfer);
}

void AppDelegate::xferReady(QObject*) {
    TraceScope trace("xferReady");
    // Ignores a late message, when the source is closed, and a settings dialog, which has no pages.
    if (gTWAINHandler == nullptr || !gTWAINHandler->dsEnabled || settingsDialogOpen)
        return;
    takeTransferReady();
    if (mNativeTransfer == nativeTransfer)
        completeNativeXfer();
    else if (mNativeTransfer == memoryTransfer)
        completeMemoryXfer();
    else
        completeFileXfer();
}

void AppDelegate::closeRequest(QObject*) {
    TraceScope trace("closeRequest");
    if (gTWAINHandler == nullptr) // a late message
        return;
    discardWaitingPage(*gTWAINHandler);
    gTWAINHandler->DisableDS(nullptr);
    gTWAINHandler->CloseDS();
    // The dialog may have changed the language.
    ReadWriteDSLanguageSetting(1, false);
    initialApplicationUserInterface();
    endScan();
}

uint16_t AppDelegate::ShowBarcodeInfo() {
    TraceScope trace("ShowBarcodeInfo");
    TW_EXTIMAGEINFO record{};
    record.NumInfos = 1;
    record.Info[0].InfoID = twain::TWEI_BARCODETEXT;
    const int32_t code =
        gTWAINHandler->DSCall(twain::DG_IMAGE, twain::DAT_EXTIMAGEINFO, twain::MSG_GET, &record);
    traceValue("ShowBarcodeInfo", code);
    return static_cast<uint16_t>(code);
}

void AppDelegate::endScan(int32_t scanSetupAfter) {
    TraceScope trace("endScan");
    mScanSetup = scanSetupAfter;
    settingsDialogOpen = false;
    currentMultiPage = 1;
    enableToolbatItems(true);
    showSourceFailureMessage();
    // A copy: the observer may remove itself.
    if (const auto observer = scanEndedObserver)
        observer();
}

} // namespace paperline
