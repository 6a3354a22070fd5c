// Where the settings file lives, and what is read of it before the controller starts.
#pragma once

#include "platform/plist/PropertyList.h"

#include <cstdint>
#include <string>

namespace paperline {

inline constexpr const char* settingsFileInBundle = "Contents/MACOS/CvPaperline_lng.plist";

// The file in the user's data folder if there is one, else the one in the bundle.
std::string settingsFileToRead(const std::string& bundle);
// The same, but the bundle's only if this user can write it. Makes the user's folder.
std::string settingsFileToWrite(const std::string& bundle);

// Replaces the file atomically. One that cannot be read is first renamed, to "NAME.damaged" or the
// next free "NAME.damaged 2"; while that fails it is not replaced.
[[nodiscard]] bool writeSettingsFile(const std::string& path, const PropertyListDictionary& root);

// Index in the language table: the language in the settings file, or without a file the system's.
int32_t launchLanguage(const std::string& bundle, uint32_t brandNumber);
// The text of the key in that language; the key itself where there is none.
std::string launchText(const std::string& bundle, uint32_t brandNumber, const std::string& key);

} // namespace paperline
