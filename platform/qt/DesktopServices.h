// Services of the desktop session through Qt and D-Bus.
#pragma once

#include "platform/desktop/Desktop.h"

#include <QDBusConnection>

#include <functional>
#include <string>

namespace paperline {

// Sets every member of desktop(). Main thread, with a QApplication.
void installDesktopServices();

// Asks the file manager on `bus` to show the path selected in its folder, and returns at once. If
// none answers within three seconds, calls `openFolder` with the path's folder, or with the path
// itself if it is a folder.
void revealThrough(const QDBusConnection& bus,
                   const std::string& path,
                   std::function<void(const std::string& folder)> openFolder);

} // namespace paperline
