// Whether the user's desktop asks for light or dark windows.
#pragma once

#include <functional>

class QObject;

namespace paperline {

enum class ColourScheme { noPreference, dark, light };

// Tells the desktop's wish as soon as it answers, and again whenever it changes, as long as `owner`
// lives. Returns at once; without a desktop portal nothing is ever told. The environment variable
// PAPERLINE_COLOUR_SCHEME ("dark" or "light") stands in for the desktop.
void watchColourScheme(QObject* owner, std::function<void(ColourScheme)> tell);

} // namespace paperline
