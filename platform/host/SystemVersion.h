// The operating system's version.
#pragma once

#include <string>

namespace paperline {

struct SystemVersion {
    int majorNumber = 0;
    int minorNumber = 0;
    int bugFix = 0;
};

// From the text of os-release.
SystemVersion parseSystemVersion(const std::string& osReleaseText);

} // namespace paperline
