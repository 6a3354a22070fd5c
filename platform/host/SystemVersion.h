// The operating system's version.
#pragma once

#include <string>

namespace paperline {

struct SystemVersion {
    int majorNumber = 0;
    int minorNumber = 0;
    int bugFix = 0;
};

// The VERSION_ID of an os-release file; missing numbers are 0.
SystemVersion parseSystemVersion(const std::string& osReleaseText);

} // namespace paperline
