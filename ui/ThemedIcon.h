// Icons for light and dark themes: grey strokes get the colour of text, coloured ones stay.
#pragma once

#include <QIcon>
#include <QPalette>

#include <string>

namespace paperline {

// From a PNG file and its "@2x" variant. Null without the file.
QIcon themedIcon(const std::string& path, QPalette::ColorRole role = QPalette::ButtonText);

} // namespace paperline
