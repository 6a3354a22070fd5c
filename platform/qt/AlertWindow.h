// Alerts as modal windows.
#pragma once

#include "platform/desktop/Alert.h"

namespace paperline {

// Shows the alert until it is dismissed; delayed messages wait. Main thread, with a QApplication.
int runAlertWindow(const Alert& alert);

// Makes runAlertPanel show windows.
void installAlertWindow();

} // namespace paperline
