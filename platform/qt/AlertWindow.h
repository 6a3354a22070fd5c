// Alerts as modal windows.
#pragma once

#include "platform/desktop/Alert.h"

namespace paperline {

// Shows the alert over the active window until it is dismissed; delayed messages wait meanwhile.
// Main thread, with a QApplication.
int runAlertWindow(const Alert& alert);

// Makes runAlertPanel show windows.
void installAlertWindow();

} // namespace paperline
