// Date formatter patterns ("YYYYMMdd", "HH:mm:ss.SSS") of the Unicode locale data standard (UTS
// 35), in the Gregorian calendar with ASCII digits, whatever the locale's own calendar and digits
// are.
#pragma once

#include <string>

namespace paperline {

struct FormatMoment {
    double secondsSinceEpoch = 0;
    std::string localeIdentifier; // decides first weekday and minimal days of the week-based year
    std::string timeZone;         // Olson identifier; empty: the system's
};

// Empty when the pattern cannot be used.
std::string formatDate(const FormatMoment& moment, const std::string& pattern);

} // namespace paperline
