// Whether the desktop is set to light or dark windows.
#pragma once

#include <functional>

class QObject;

namespace paperline {

enum class ColourScheme { noPreference, dark, light };

// Calls `changed` with the desktop's setting once it is known and whenever it changes, while
// `owner` lives. Without a desktop portal it is never called. The environment variable
// PAPERLINE_COLOUR_SCHEME ("dark" or "light") overrides the setting.
void watchColourScheme(QObject* owner, std::function<void(ColourScheme)> changed);

} // namespace paperline
