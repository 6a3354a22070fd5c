// Contrast of colours as the accessibility guidelines (WCAG) define it.
#pragma once

#include <QColor>

namespace paperline {

inline constexpr double readableContrast = 4.5;

double relativeLuminance(const QColor& colour); // 0 black to 1 white

// From 1 (same) to 21 (black on white).
double contrastRatio(const QColor& first, const QColor& second);

// The background, made darker or lighter until the text on it is readable.
QColor readableBackground(QColor background, const QColor& text);

} // namespace paperline
