// Where data source bundles are looked for, in order. The application and the data source manager
// both list these folders, so the order is written once.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

namespace twain::abi {

inline constexpr const char* systemSourceFolder = "/Library/Image Capture/TWAIN Data Sources";
inline constexpr const char* plainSourceFolder =
    "/usr/local/lib/twain"; // other makers' plain *.ds files

// $XDG_DATA_HOME/paperline, or ~/.local/share/paperline; empty when neither is known.
inline std::string userDataFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && data[0] == '/')
        return std::string(data) + "/paperline";
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/')
        return std::string(home) + "/.local/share/paperline";
    return {};
}

// PAPERLINE_ROOT stands in front of the system's own places.
inline std::string systemPlace(const std::string& absolutePath) {
    const char* root = std::getenv("PAPERLINE_ROOT");
    return root != nullptr ? root + absolutePath : absolutePath;
}

// The bundle folders: the system's, the user's, then the one beside the program (buildTreeFolder is
// the folder that holds Paperline.app; empty when not known).
inline std::vector<std::string> bundleFolders(const std::string& buildTreeFolder) {
    std::vector<std::string> folders{systemPlace(systemSourceFolder)};
    if (const std::string user = userDataFolder(); !user.empty())
        folders.push_back(user + "/TWAIN Data Sources");
    if (!buildTreeFolder.empty())
        folders.push_back(buildTreeFolder + "/TWAIN Data Sources");
    return folders;
}

} // namespace twain::abi
