// Options as people and files give them: NAME=VALUE lines, applied when a device is opened.
#pragma once

#include "sources/worker/ScanDevice.h"

#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

struct OptionSetting {
    std::string name;
    std::string value;
    bool operator==(const OptionSetting&) const = default;
};

// Settings in their order; blank lines and those that start with '#' are left out. A line without
// "=" is a name with an empty value. Blanks around the name are dropped, the value is kept as it
// is.
std::vector<OptionSetting> parseOptionSettings(std::string_view lines);

// <user data>/Device Options/<product>.conf, "/" in the product standing as "_"; empty without a
// product or a home.
std::string storedOptionsPath(const std::string& product);

// Applies the stored options of the product, then those of the environment variable
// PAPERLINE_SOURCE_OPTIONS. A stored option that the device does not take is reported on standard
// error and left out; one of the environment ends with its status, and `errorText` names it.
[[nodiscard]] ScanStatus
applyOptionSettings(ScanDevice& device, const std::string& product, std::string& errorText);

} // namespace paperline::sources
