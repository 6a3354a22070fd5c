// The application's colours: those of Qt, dark when the desktop asks for it, with a readable
// selection.
#pragma once

#include <QPalette>

class QObject;

namespace paperline {

// The palette with a selection that contrasts with its text.
QPalette withReadableSelection(QPalette palette);

// A dark palette with the selection colour of `platform`.
QPalette darkPalette(const QPalette& platform);

bool isDark(const QPalette& palette);

// Sets the application's palette now and at every change of the desktop's colours, while `owner`
// lives.
void followDesktopColours(QObject* owner);

} // namespace paperline
