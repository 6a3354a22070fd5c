// Modal messages.
#include "controller/AppDelegate.h"

#include "base/CvOutputLog.h"
#include "platform/desktop/Alert.h"
#include "platform/desktop/MainLoop.h"

namespace paperline {
namespace {

void showMessage(const char* key, const std::string& informativeText = {}) {
    const DelayedMessagesHold hold;
    runAlertPanel({.title = " ",
                   .message = localizedString(gLanguageBundle, key),
                   .informativeText = informativeText,
                   .defaultButton = ""});
}

// Once per scan, for both of its callers.
void showNoDisplayImageOnce() {
    if (gNoDisplayImageShown != 0)
        return;
    gNoDisplayImageShown = 1;
    showMessage("NoDisplayImage");
}

} // namespace

void AppDelegate::showMemoryNotEnoughMessage() {
    TraceScope trace("showMemoryNotEnoughMessage");
    showMessage("ShowNoMem");
}

void AppDelegate::showNoDisplayImageMessage() {
    TraceScope trace("showNoDisplayImageMessage");
    showNoDisplayImageOnce();
}

void AppDelegate::showNoDisplayImageCheckAgainMessage() {
    TraceScope trace("showNoDisplayImageCheckAgainMessage");
    showNoDisplayImageOnce();
}

void AppDelegate::showNoImageSaveMessage() {
    TraceScope trace("showNoImageSaveMessage");
    showMessage("NoSaveImage");
}

void AppDelegate::showNotCorrectFolderMessage() {
    TraceScope trace("showNotCorrectFolderMessage");
    showMessage("NotCorrectFolder");
}

void AppDelegate::showNoEnoughDiskSpaceMessage() {
    TraceScope trace("showNoEnoughDiskSpaceMessage");
    showMessage("NoEnoughDiskSpace");
}

void AppDelegate::showPagesKeptMessage(const std::string& folder) {
    TraceScope trace("showPagesKeptMessage");
    showMessage("PagesKept", folder);
}

} // namespace paperline
