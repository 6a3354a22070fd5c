// The status line. During a scan it is repainted at once: the event loop stands still.
#include "controller/AppDelegate.h"

#include "platform/desktop/MainLoop.h"
#include "platform/files/PathText.h"
#include "ui/MainWindow.h"

#include <QGuiApplication>

#include <algorithm>

namespace paperline {
namespace {

MainWindow* mainWindow(const AppDelegate& controller) {
    return qobject_cast<MainWindow*>(controller.paperlineWindow);
}

// The text with the value for "%d" or "%@". In a right-to-left text, direction marks keep the
// value's own order.
QString filledIn(const std::string& text, const char* marker, const std::string& value) {
    constexpr QChar leftToRightIsolate(0x2066);
    constexpr QChar popDirectionalIsolate(0x2069);
    QString shown = QString::fromStdString(value);
    if (QGuiApplication::layoutDirection() == Qt::RightToLeft)
        shown = leftToRightIsolate + shown + popDirectionalIsolate;
    return QString::fromStdString(text).replace(QString::fromUtf8(marker), shown);
}

} // namespace

void AppDelegate::showStatus(const char* key) {
    if (MainWindow* window = mainWindow(*this))
        window->setStatus(QString::fromStdString(localizedString(mlangBundle, key)));
}

void AppDelegate::showIdleStatus() {
    showStatus(mMenuFileSave != 0 ? "StatusReady" : "StatusSaveOff");
    showPageCount();
}

void AppDelegate::showPageCount() {
    MainWindow* window = mainWindow(*this);
    if (window == nullptr)
        return;
    window->setEmptyStateShown(cellInfos.empty());
    // The preview is not listed.
    const size_t previews = nonFileSaveImageInTempFolder != 0 ? 1 : 0;
    const size_t pages = cellInfos.size() - std::min(previews, cellInfos.size());
    window->setPageCount(
        pages == 0
            ? QString()
            : filledIn(localizedString(mlangBundle, "StatusPages"), "%d", std::to_string(pages)));
}

void AppDelegate::showScanningStatus(uint32_t pageNumber) {
    MainWindow* window = mainWindow(*this);
    if (window == nullptr)
        return;
    window->setStatus(
        filledIn(localizedString(mlangBundle, "StatusScanning"), "%d", std::to_string(pageNumber)));
    repaintWithoutInput();
}

void AppDelegate::showSavingStatus(const std::string& path) {
    MainWindow* window = mainWindow(*this);
    if (window == nullptr)
        return;
    window->setStatus(
        filledIn(localizedString(mlangBundle, "StatusSaving"), "%@", lastPathComponent(path)));
    repaintWithoutInput();
}

} // namespace paperline
