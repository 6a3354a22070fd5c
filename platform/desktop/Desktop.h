// Services of the desktop session. platform/qt/DesktopServices.h installs the real ones; the
// command line and tests install others.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace paperline {

struct Desktop {
    // Shows a folder chooser; nothing when it is cancelled.
    std::function<std::optional<std::string>(const std::string& title,
                                             const std::string& startFolder)>
        chooseFolder;
    std::function<void(const std::string& folder)> openFolder; // in the file manager
    std::function<void(const std::string& path)> revealFile;   // selected in its folder
    std::function<void()> beep;
};

// The one of this process. Its members do nothing until others are installed.
Desktop& desktop();

} // namespace paperline
