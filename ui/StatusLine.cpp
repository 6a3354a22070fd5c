// Operations of AppDelegate that say in the status line what is going on. They repaint at once,
// because the main thread may be about to scan or to write.
#include "controller/AppDelegate.h"

#include "platform/desktop/MainLoop.h"
#include "platform/files/PathText.h"
#include "ui/BidirectionalText.h"
#include "ui/MainWindow.h"

#include <algorithm>

namespace paperline {
namespace {

QString filledIn(const std::string& text, const std::string& marker, const std::string& value) {
    return QString::fromStdString(text).replace(QString::fromStdString(marker),
                                                isolatedInSentence(QString::fromStdString(value)));
}

} // namespace

void AppDelegate::showStatus(const char* key) {
    if (auto* window = qobject_cast<MainWindow*>(paperlineWindow))
        window->setStatus(QString::fromStdString(localizedString(mlangBundle, key)));
}

void AppDelegate::showIdleStatus() {
    auto* window = qobject_cast<MainWindow*>(paperlineWindow);
    if (window == nullptr)
        return;
    showStatus(mMenuFileSave != 0 ? "StatusReady" : "StatusSaveOff");
    showPageCount();
}

void AppDelegate::showPageCount() {
    auto* window = qobject_cast<MainWindow*>(paperlineWindow);
    if (window == nullptr)
        return;
    window->setEmptyStateShown(cellInfos.empty());
    // The preview is no page of the list.
    const size_t previews = nonFileSaveImageInTempFolder != 0 ? 1 : 0;
    const size_t pages = cellInfos.size() - std::min(previews, cellInfos.size());
    window->setPageCount(
        pages == 0
            ? QString()
            : filledIn(localizedString(mlangBundle, "StatusPages"), "%d", std::to_string(pages)));
}

void AppDelegate::showScanningStatus(uint32_t pageNumber) {
    auto* window = qobject_cast<MainWindow*>(paperlineWindow);
    if (window == nullptr)
        return;
    window->setStatus(
        filledIn(localizedString(mlangBundle, "StatusScanning"), "%d", std::to_string(pageNumber)));
    repaintWithoutInput();
}

void AppDelegate::showSavingStatus(const std::string& path) {
    auto* window = qobject_cast<MainWindow*>(paperlineWindow);
    if (window == nullptr)
        return;
    window->setStatus(
        filledIn(localizedString(mlangBundle, "StatusSaving"), "%@", lastPathComponent(path)));
    repaintWithoutInput();
}

} // namespace paperline
