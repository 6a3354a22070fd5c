// Folders of the system and of the user. The application, the data source manager and data sources
// use the same ones; the latter two are loaded into other programs, so nothing is linked here.
#pragma once

#include "platform/host/Environment.h"

#include <string>
#include <vector>

namespace paperline {

inline constexpr const char* systemSourceFolder = "/Library/Image Capture/TWAIN Data Sources";
inline constexpr const char* plainSourceFolder = "/usr/local/lib/twain"; // *.ds files, no bundles

// An absolute path of the system. PAPERLINE_ROOT, if set, is put in front of it.
inline std::string systemPlace(const std::string& absolutePath) {
    return environment("PAPERLINE_ROOT") + absolutePath;
}

// "paperline" in the folder that the variable names, or in that one below HOME. Empty when neither
// variable holds an absolute path.
inline std::string userFolder(const char* variable, const char* belowHome) {
    if (const std::string folder = environment(variable); folder.starts_with('/'))
        return folder + "/paperline";
    const std::string home = environment("HOME");
    return home.starts_with('/') ? home + belowHome + "/paperline" : std::string();
}
inline std::string userDataFolder() {
    return userFolder("XDG_DATA_HOME", "/.local/share");
}
inline std::string userCacheFolder() {
    return userFolder("XDG_CACHE_HOME", "/.cache");
}

// Where data source bundles are, in search order: the system's folder, the user's, and the one
// beside the program. `buildTreeFolder` holds Paperline.app; empty when unknown.
inline std::vector<std::string> bundleFolders(const std::string& buildTreeFolder) {
    std::vector<std::string> folders{systemPlace(systemSourceFolder)};
    if (const std::string user = userDataFolder(); !user.empty())
        folders.push_back(user + "/TWAIN Data Sources");
    if (!buildTreeFolder.empty())
        folders.push_back(buildTreeFolder + "/TWAIN Data Sources");
    return folders;
}

} // namespace paperline
