// The desktop session's services through Qt and D-Bus.
#pragma once

#include "platform/desktop/Desktop.h"

#include <QDBusConnection>

#include <functional>
#include <string>

namespace paperline {

// Fills every member of desktop(). Main thread, with a QApplication.
void installDesktopServices();

// Asks the file manager behind `bus` to show the path selected in its folder and returns at once.
// When no file manager answers within three seconds, `openFolder` gets the folder of the path (the
// path itself when it is a folder).
void revealThrough(const QDBusConnection& bus,
                   const std::string& path,
                   std::function<void(const std::string& folder)> openFolder);

} // namespace paperline
