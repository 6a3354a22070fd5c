// Where the settings file lives, and what is read of it before the controller starts.
#pragma once

#include <cstdint>
#include <string>

namespace paperline {

inline constexpr const char* settingsFileInBundle = "Contents/MACOS/CvPaperline_lng.plist";

// The user's own file when there is one, else the bundle's.
std::string settingsFileToRead(const std::string& bundle);
// The user's own file when there is one; else the bundle's when this user can write it; else the
// user's own, whose folder is made.
std::string settingsFileToWrite(const std::string& bundle);

// Index in the language table: the language in the settings file, or without a file the system's.
int32_t launchLanguage(const std::string& bundle, uint32_t brandNumber);
// The text of the key in that language; the key itself where there is none.
std::string launchText(const std::string& bundle, uint32_t brandNumber, const std::string& key);

} // namespace paperline
