// Formats dates by patterns of the Unicode standard (UTS 35), such as "YYYYMMdd" and
// "HH:mm:ss.SSS". Always in the Gregorian calendar with ASCII digits, whatever the locale uses.
#pragma once

#include <string>

namespace paperline {

struct FormatMoment {
    double secondsSinceEpoch = 0;
    std::string localeIdentifier; // for names and the week-based year "YYYY"; empty: en_US
    std::string timeZone;         // "Europe/Berlin"; empty: the system's
};

// Empty when the pattern is invalid.
std::string formatDate(const FormatMoment& moment, const std::string& pattern);

} // namespace paperline
