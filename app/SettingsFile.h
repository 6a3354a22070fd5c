// Where the settings file lives.
#pragma once

#include <string>

namespace paperline {

inline constexpr const char* settingsFileInBundle = "Contents/MACOS/CvPaperline_lng.plist";

// The user's own file when there is one, else the bundle's.
std::string settingsFileToRead(const std::string& bundle);
// The user's own file when there is one; else the bundle's when this user can write it; else the
// user's own, whose folder is made.
std::string settingsFileToWrite(const std::string& bundle);

} // namespace paperline
