// The application's colours: the platform's own, turned dark when the desktop asks for it and the
// platform does not, with a selection whose text can be read.
#pragma once

#include <QPalette>

class QObject;

namespace paperline {

// The palette with a selection dark or light enough for its text.
QPalette withReadableSelection(QPalette palette);

// A dark palette with the platform's selection colour.
QPalette darkPalette(const QPalette& platform);

bool isDark(const QPalette& palette);

// Sets the application's palette now and whenever the desktop's wish changes, while `owner` lives.
void followDesktopColours(QObject* owner);

} // namespace paperline
