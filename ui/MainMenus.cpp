#include "ui/MainMenus.h"

#include "controller/InterfaceOutlets.h"

#include <QAction>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace paperline {
namespace {

QAction* addItem(QMenu* menu, const QKeySequence& shortcut = {}) {
    QAction* item = menu->addAction(QString());
    item->setShortcut(shortcut);
    item->setMenuRole(QAction::NoRole);
    return item;
}

void makeApplicationMenu(QMenu* menu, InterfaceOutlets& outlets) {
    outlets.systemAbout = addItem(menu);
    menu->addSeparator();
    outlets.systemHideCPL = addItem(menu, Qt::CTRL | Qt::Key_H);
    outlets.systemHideOthers = addItem(menu);
    outlets.systemShowAll = addItem(menu);
    menu->addSeparator();
    outlets.systemQuitCPL = addItem(menu);
}

void makeFileMenu(QMenu* menu, InterfaceOutlets& outlets) {
    outlets.fileMenuSave = menu;
    outlets.fileMenuItem = menu->menuAction();
    outlets.fileSave = addItem(menu, QKeySequence::Save);
    outlets.fileSave->setText("Save"); // never titled for brands without a save command
    outlets.fileSave->setCheckable(true);
    outlets.fileSave->setChecked(true);
    menu->addSeparator();
    outlets.fileSetup = addItem(menu, Qt::CTRL | Qt::Key_E);
    outlets.fileScan = addItem(menu, Qt::CTRL | Qt::Key_R);
    menu->addSeparator();
    outlets.fileQuit = addItem(menu, Qt::CTRL | Qt::Key_Q);
}

} // namespace

void makeMainMenus(QMainWindow& window, InterfaceOutlets& outlets) {
    QMenuBar* bar = window.menuBar();
    QMenu* application = bar->addMenu(QString());
    application->setObjectName("applicationMenu");
    makeApplicationMenu(application, outlets);
    makeFileMenu(bar->addMenu(QString()), outlets);

    outlets.fileMenuLanguage = bar->addMenu(QString());
    outlets.fileSelectLangage = new QAction(&window); // in no menu: the languages have commands

    outlets.fileNumeWindow = bar->addMenu(QString());
    outlets.windowMini = addItem(outlets.fileNumeWindow, Qt::CTRL | Qt::Key_M);
}

} // namespace paperline
