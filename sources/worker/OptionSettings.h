// Options as people and files give them, applied when a device is opened.
#pragma once

#include "sources/framework/OptionLines.h"
#include "sources/worker/ScanDevice.h"

#include <string>

namespace paperline::sources {

// Applies the stored options of the product, then those of the environment variable
// PAPERLINE_SOURCE_OPTIONS. A stored option that the device does not take is reported on standard
// error and left out; one of the environment ends with its status, and `errorText` names it.
[[nodiscard]] ScanStatus
applyOptionSettings(ScanDevice& device, const std::string& product, std::string& errorText);

} // namespace paperline::sources
