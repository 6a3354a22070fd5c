// The adapter to libsane.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <memory>
#include <optional>
#include <vector>

namespace paperline::sources {

std::unique_ptr<SaneScanner> makeLibsaneScanner();

// Every device that SANE finds, network ones included; nothing on failure. Takes seconds, and a
// broken driver may crash the process.
std::optional<std::vector<SaneDeviceEntry>> listSaneDevices();

} // namespace paperline::sources
