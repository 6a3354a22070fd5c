// Colour arithmetic for readable text.
#pragma once

#include <QColor>

namespace paperline {

inline constexpr double readableContrast = 4.5;

// From 1 (same) to 21 (black on white), by relative luminance.
double contrastRatio(const QColor& first, const QColor& second);

// The background, darkened or lightened just as far as the text on it needs to be readable.
QColor readableBackground(QColor background, const QColor& text);

} // namespace paperline
