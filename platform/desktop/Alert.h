// Modal messages. A presenter is installed at start: windows by the application, lines on standard
// error by the command line, a recorder by tests.
#pragma once

#include <functional>
#include <string>

namespace paperline {

struct Alert {
    std::string title; // " " for plain messages
    std::string message;
    std::string informativeText; // second, smaller paragraph; may be empty
    std::string defaultButton;   // empty: the platform's default button
};

// Codes of the platform's alerts.
inline constexpr int alertDefaultReturn = 1;
inline constexpr int alertAlternateReturn = 0;

using AlertPresenter = std::function<int(const Alert&)>; // returns one of the codes above
void setAlertPresenter(AlertPresenter presenter);

// Shows the alert and returns when it is dismissed. Without a presenter the text goes to standard
// error and the default button counts as pressed.
int runAlertPanel(const Alert& alert);

} // namespace paperline
