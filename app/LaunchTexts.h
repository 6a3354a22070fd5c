// Texts shown before the controller has read its settings.
#pragma once

#include <cstdint>
#include <string>

namespace paperline {

// Index in the language table: what the settings file names, else the system's first preferred
// language where the brand offers it, else English.
int32_t launchLanguage(const std::string& bundle, uint32_t brandNumber);

// The text of the key in that language; the key itself where there is none.
std::string launchText(const std::string& bundle, uint32_t brandNumber, const std::string& key);

} // namespace paperline
