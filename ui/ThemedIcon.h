// Icons that fit light and dark themes: the grey strokes of the picture take the colour of the text
// around them, its coloured strokes stay.
#pragma once

#include <QIcon>
#include <QPalette>

#include <string>

namespace paperline {

// From a PNG file, with "@2x" beside it for fine screens. Without the file the icon is null.
QIcon themedIcon(const std::string& path, QPalette::ColorRole role = QPalette::ButtonText);

} // namespace paperline
