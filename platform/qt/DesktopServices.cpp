#include "platform/qt/DesktopServices.h"

#include "platform/desktop/MainLoop.h"
#include "platform/files/Files.h"
#include "platform/files/PathText.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileDialog>
#include <QProxyStyle>
#include <QPushButton>
#include <QSplitter>
#include <QStringList>
#include <QUrl>

#include <utility>

namespace paperline {
namespace {

constexpr int answerWithinMilliseconds = 3000;
constexpr int chooserWidth = 720;
constexpr int chooserHeight = 460;
constexpr int placesWidth = 180;

// Styles paint text in the application's direction, not in that of the widget.
class LeftToRightText : public QProxyStyle {
public:
    void drawItemText(QPainter* painter,
                      const QRect& place,
                      int flags,
                      const QPalette& palette,
                      bool enabled,
                      const QString& text,
                      QPalette::ColorRole role) const override {
        const int forced = flags | Qt::TextForceLeftToRight;
        QProxyStyle::drawItemText(painter, place, forced, palette, enabled, text, role);
    }
};

// Qt's own chooser, for desktops that provide none.
void styleWidgetChooser(QFileDialog& chooser) {
    chooser.setViewMode(QFileDialog::List);
    chooser.resize(chooserWidth, chooserHeight);
    if (auto* panes = chooser.findChild<QSplitter*>())
        panes->setSizes({placesWidth, chooserWidth - placesWidth});
    for (QPushButton* button : chooser.findChildren<QPushButton*>())
        button->setIcon({});
    // Paths read from left to right in every interface language.
    if (auto* path = chooser.findChild<QWidget*>("lookInCombo")) {
        path->setLayoutDirection(Qt::LeftToRight);
        auto* style = new LeftToRightText;
        style->setParent(path);
        path->setStyle(style);
    }
}

std::optional<std::string> chooseFolder(const std::string& title, const std::string& startFolder) {
    const DelayedMessagesHold hold;
    QFileDialog chooser(QApplication::activeWindow(),
                        QString::fromStdString(title),
                        QString::fromStdString(startFolder));
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOption(QFileDialog::ShowDirsOnly);
    styleWidgetChooser(chooser);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return std::nullopt;
    return chooser.selectedFiles().constFirst().toStdString();
}

void openFolder(const std::string& folder) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder)));
}

void revealFile(const std::string& path) {
    revealThrough(QDBusConnection::sessionBus(), path, openFolder);
}

QDBusMessage showItemsCall(const std::string& path) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                       QStringLiteral("/org/freedesktop/FileManager1"),
                                       QStringLiteral("org.freedesktop.FileManager1"),
                                       QStringLiteral("ShowItems"));
    const QUrl address = QUrl::fromLocalFile(QString::fromStdString(path));
    call << QStringList(QString::fromLatin1(address.toEncoded())) << QString();
    return call;
}

} // namespace

void revealThrough(const QDBusConnection& bus,
                   const std::string& path,
                   std::function<void(const std::string& folder)> openFolder) {
    std::string folder = folderExists(path) ? path : folderOfPath(path);
    if (!bus.isConnected()) {
        openFolder(folder);
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(showItemsCall(path), answerWithinMilliseconds), qApp);
    QObject::connect(watcher,
                     &QDBusPendingCallWatcher::finished,
                     watcher,
                     [watcher, folder = std::move(folder), openFolder = std::move(openFolder)] {
                         if (watcher->isError())
                             openFolder(folder);
                         watcher->deleteLater();
                     });
}

void installDesktopServices() {
    desktop() = {chooseFolder, openFolder, revealFile, [] { QApplication::beep(); }};
}

} // namespace paperline
