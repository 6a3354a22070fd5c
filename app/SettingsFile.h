// Where the settings file lives.
#pragma once

#include "platform/plist/PropertyList.h"

#include <string>

namespace paperline {

inline constexpr const char* settingsFileInBundle = "Contents/MACOS/CvPaperline_lng.plist";

// The user's own file when there is one, else the bundle's.
std::string settingsFileToRead(const std::string& bundle);
// The user's own file when there is one; else the bundle's when this user can write it; else the
// user's own, whose folder is made.
std::string settingsFileToWrite(const std::string& bundle);

// Replaces the file atomically. One that cannot be read is first renamed, to "NAME.damaged" or the
// next free "NAME.damaged 2"; while that fails it is not replaced.
[[nodiscard]] bool writeSettingsFile(const std::string& path, const PropertyListDictionary& root);

} // namespace paperline
