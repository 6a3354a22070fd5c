// The menu bar: application, File, Options and Window menus. ui/Titles.cpp sets the texts.
#pragma once

class QMainWindow;

namespace paperline {

struct InterfaceOutlets;

// Fills the outlets of the menus.
void makeMainMenus(QMainWindow& window, InterfaceOutlets& outlets);

} // namespace paperline
