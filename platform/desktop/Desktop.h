// What the desktop session does for the user. Members are replaced by the command line and by
// tests.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace paperline {

struct Desktop {
    // Lets the user choose a folder in a window with the title, starting at the folder given;
    // nothing when he cancels.
    std::function<std::optional<std::string>(const std::string& title,
                                             const std::string& startFolder)>
        chooseFolder;
    // Shows the folder's window in the file manager.
    std::function<void(const std::string& folder)> openFolder;
    // Shows the file (or folder) selected in its folder.
    std::function<void(const std::string& path)> revealFile;
    // A short signal that the application wants attention.
    std::function<void()> beep;
};

// The process-wide desktop; every member does nothing until installed.
Desktop& desktop();

} // namespace paperline
