// Modal messages. The application installs a presenter that shows windows, the command line one
// that writes to standard error, tests one that records.
#pragma once

#include <functional>
#include <string>

namespace paperline {

struct Alert {
    std::string title; // " " for plain messages
    std::string message;
    std::string informativeText; // second, smaller paragraph; may be empty
    std::string defaultButton;   // empty: "OK"
};

inline constexpr int alertDefaultReturn = 1;
inline constexpr int alertAlternateReturn = 0;

using AlertPresenter = std::function<int(const Alert&)>; // returns one of the above
void setAlertPresenter(AlertPresenter presenter);

// Shows the alert and returns when it is dismissed. Without a presenter it writes the text to
// standard error and returns as if the default button was pressed.
int runAlertPanel(const Alert& alert);

} // namespace paperline
