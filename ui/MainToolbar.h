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

// The layout leaves a space behind its last button; this leaves the same before the first.
void evenToolbarEnds(QToolBar* toolbar);

// The label that names a list for screen readers.
QLabel* unseenLabelOf(const QWidget* control);

// Gives the Scan button the look of the main command in the window's present colours.
void styleScanButton(const InterfaceOutlets& outlets);

// The button that stands for the action, which takes the texts that screen readers say.
QWidget* toolbarButton(const QToolBar* toolbar, QAction* action);

} // namespace paperline
