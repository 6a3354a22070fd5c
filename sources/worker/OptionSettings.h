// Applies options from files and the environment when a device is opened.
#pragma once

#include "sources/framework/OptionLines.h"
#include "sources/worker/ScanDevice.h"

#include <string>

namespace paperline::sources {

// Applies the stored options of the product, then those of this scan (OptionLines.h). A stored
// option that the device refuses is reported on standard error and skipped; one of this scan gives
// its status, and `errorText` names it.
[[nodiscard]] ScanStatus
applyOptionSettings(ScanDevice& device, const std::string& product, std::string& errorText);

} // namespace paperline::sources
