// The menu bar: application, File, Options and Window menus. Titles are set later, by language.
#pragma once

class QMainWindow;

namespace paperline {

struct InterfaceOutlets;

// Fills the menu outlets. File menu: Save, separator, Setup, Scan, separator, Quit.
void makeMainMenus(QMainWindow& window, InterfaceOutlets& outlets);

} // namespace paperline
