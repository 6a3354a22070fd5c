// The toolbar of the main window.
#pragma once

#include <string>

class QAction;
class QLabel;
class QMainWindow;
class QToolBar;
class QWidget;

namespace paperline {

struct InterfaceOutlets;

// Fills the toolbar outlets. Items in order: Setup, Scan, format list, save switch, folder button,
// save-folder field, open-folder button, fit, actual size. Pictures come from the resource folder.
void makeMainToolbar(QMainWindow& window, InterfaceOutlets& outlets, const std::string& resources);

// Makes the space before the first button the same as the layout's after the last.
void evenToolbarEnds(QToolBar* toolbar);

// The hidden label that names a combo box for screen readers.
QLabel* unseenLabelOf(const QWidget* control);

// Makes the Scan button stand out, in the window's present colours.
void styleScanButton(const InterfaceOutlets& outlets);

// The button of the action; it takes the texts for screen readers.
QWidget* toolbarButton(const QToolBar* toolbar, QAction* action);

} // namespace paperline
