#include "ui/WindowPlace.h"

#include <QMainWindow>
#include <QScreen>
#include <QSettings>

namespace paperline {
namespace {

constexpr const char* sizeKey = "MainWindow/size";
constexpr const char* maximizedKey = "MainWindow/maximized";

QString fileBelow(const std::string& folder) {
    return QString::fromStdString(folder + "/window.ini");
}

} // namespace

void restoreWindowSize(QMainWindow& window, const std::string& folder) {
    const QSettings settings(fileBelow(folder), QSettings::IniFormat);
    const QSize size = settings.value(sizeKey).toSize();
    if (!size.isValid() || size.isEmpty())
        return;
    window.resize(
        size.boundedTo(window.screen()->availableSize()).expandedTo(window.minimumSizeHint()));
    if (settings.value(maximizedKey, false).toBool())
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

void rememberWindowSize(const QMainWindow& window, const std::string& folder) {
    QSettings settings(fileBelow(folder), QSettings::IniFormat);
    settings.setValue(maximizedKey, window.isMaximized());
    settings.setValue(sizeKey,
                      window.isMaximized() ? window.normalGeometry().size() : window.size());
}

} // namespace paperline
