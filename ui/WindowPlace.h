// Remembers the main window's size from one run to the next, in a file of the user's own.
#pragma once

#include <string>

class QMainWindow;

namespace paperline {

// The size last remembered below the folder, as far as the screen has room; nothing changes without
// one.
void restoreWindowSize(QMainWindow& window, const std::string& folder);
void rememberWindowSize(const QMainWindow& window, const std::string& folder);

} // namespace paperline
