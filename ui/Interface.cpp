// Makes the windows and connects every control to its command.
#include "controller/AppDelegate.h"

#include "base/BrandProfile.h"
#include "base/FileFormats.h"
#include "platform/desktop/MainLoop.h"
#include "platform/places/Places.h"
#include "ui/MainWindow.h"
#include "ui/SelectSourceWindow.h"
#include "ui/Theme.h"
#include "viewer/ImageView.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStringListModel>
#include <QTableView>

namespace paperline {
namespace {

using Command = void (AppDelegate::*)(QObject*);

void join(AppDelegate& controller, QAction* item, Command command) {
    QObject::connect(item, &QAction::triggered, &controller, [&controller, item, command] {
        (controller.*command)(item);
    });
}

void joinToolbar(AppDelegate& controller) {
    join(controller, controller.paperlineToolbar_Setup, &AppDelegate::toolBarItemSetup);
    join(controller, controller.paperlineToolbar_Scan, &AppDelegate::toolBarItemScan);
    join(controller, controller.paperlineToolbar_FileFormat, &AppDelegate::toolBarItemFileFormat);
    join(controller,
         controller.paperlineToolbar_FolderSelect,
         &AppDelegate::toolBarItemFolderSelect);
    join(controller, controller.paperlineToolbar_OpenDlg, &AppDelegate::openSaveFolder);
    join(controller, controller.paperlineToolbar_FitPage, &AppDelegate::toolBarItemFitPage);
    join(controller, controller.paperlineToolbar_ActualPage, &AppDelegate::toolBarItemActualPage);

    // A command may leave the mode as it is; then the button must not change either.
    for (QAction* mode :
         {controller.paperlineToolbar_FitPage, controller.paperlineToolbar_ActualPage})
        QObject::connect(mode, &QAction::triggered, &controller, [&controller] {
            const bool fits = controller._fitOrAcutalImage == fitMode;
            controller.paperlineToolbar_FitPage->setChecked(fits);
            controller.paperlineToolbar_ActualPage->setChecked(!fits);
        });

    QComboBox* formats = controller.paperlineToolbar_FileFormatsCombox;
    for (const FileFormat& format : fileFormats)
        formats->addItem(QString::fromUtf8(format.listName));
    // activated: choices of the user, not those of the program.
    QObject::connect(formats, &QComboBox::activated, &controller, [&controller](int index) {
        controller.toolBarItemFileFormatSelect(index);
    });
}

void showAllWindows() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isWindow() && window->isMinimized())
            window->showNormal();
        if (window->isVisible())
            window->raise();
    }
}

void joinMenus(AppDelegate& controller) {
    join(controller, controller.fileSave, &AppDelegate::menuFileSave);
    join(controller, controller.fileSetup, &AppDelegate::menuFileSetup);
    join(controller, controller.fileScan, &AppDelegate::menuFileScan);
    join(controller, controller.fileQuit, &AppDelegate::menuFileQuit);
    join(controller, controller.fileSelectLangage, &AppDelegate::menuFileSelectLanguage);
    join(controller, controller.systemAbout, &AppDelegate::orderFrontStandardAboutPanel);
    QMainWindow* window = controller.paperlineWindow;
    for (QAction* item : {controller.windowMini, controller.systemHideCPL})
        QObject::connect(item, &QAction::triggered, window, &QWidget::showMinimized);
    QObject::connect(controller.systemShowAll, &QAction::triggered, window, showAllWindows);
    QObject::connect(
        controller.systemQuitCPL, &QAction::triggered, window, [] { requestTermination(); });
    // Desktops here do not let a program hide the others.
    controller.systemHideOthers->setVisible(false);
}

void joinSelectionWindow(AppDelegate& controller) {
    QPushButton* ok = controller.twainSelectSourceOKBtn;
    QPushButton* cancel = controller.twainSelectSourceCancelBtn;
    QObject::connect(
        ok, &QPushButton::clicked, &controller, [&controller] { controller.doBtnOK(nullptr); });
    QObject::connect(cancel, &QPushButton::clicked, &controller, [&controller] {
        controller.doBtnCancel(nullptr);
    });
    controller.reportRowSelection(controller._tableViewSelectSource);
}

// Restores the window's size of the last run, as far as the screen has room, and saves it at the
// end.
void keepWindowSize(MainWindow& window) {
    static constexpr const char* sizeKey = "MainWindow/size";
    static constexpr const char* maximizedKey = "MainWindow/maximized";
    const QString file = QString::fromStdString(userDataFolder() + "/window.ini");
    const auto remember = [&window, file] {
        QSettings settings(file, QSettings::IniFormat);
        settings.setValue(maximizedKey, window.isMaximized());
        settings.setValue(sizeKey,
                          window.isMaximized() ? window.normalGeometry().size() : window.size());
    };
    QObject::connect(&window, &MainWindow::closing, &window, remember);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &window, remember);

    const QSettings settings(file, QSettings::IniFormat);
    const QSize size = settings.value(sizeKey).toSize();
    if (!size.isValid() || size.isEmpty())
        return;
    window.resize(
        size.boundedTo(window.screen()->availableSize()).expandedTo(window.minimumSizeHint()));
    if (settings.value(maximizedKey, false).toBool())
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

} // namespace

void AppDelegate::loadInterface() {
    if (!launchOptions_.commandLine)
        followDesktopColours(this);
    const std::string resources = mResourcePath.empty() ? resourcePath() : mResourcePath;
    mImageView = new ImageView;
    auto mainWindow = std::make_unique<MainWindow>(*this, mImageView, resources);
    auto selectionWindow = std::make_unique<SelectSourceWindow>(*this);
    mainWindow->setApplicationMenuTitle(
        QString::fromUtf8(brandProfile(launchOptions_.brand).productName));

    joinToolbar(*this);
    joinMenus(*this);
    joinSelectionWindow(*this);
    connectPageViews();
    if (!launchOptions_.commandLine)
        keepWindowSize(*mainWindow);
    // A close during a transfer takes effect after it.
    mainWindow->setCloseGuard([] { return !delayedMessagesAreHeld(); });
    connect(mainWindow.get(), &MainWindow::closing, this, [this] {
        if (delayedMessagesAreHeld())
            performAfterDelay(0, [this] { windowWillClose(); });
        else
            windowWillClose();
    });
    windows_.push_back(std::move(mainWindow));
    windows_.push_back(std::move(selectionWindow));
    windowDidLoad();
}

void AppDelegate::reloadSourceTable() {
    QStringList names;
    for (const TWAIN_INFO& source : dsArray)
        names.append(QString::fromStdString(source.productNameText()));
    qobject_cast<QStringListModel*>(_tableViewSelectSource->model())->setStringList(names);
}

} // namespace paperline
