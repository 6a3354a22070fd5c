// Lists SANE's devices in separate processes with a time limit, because a driver may crash or hang.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

struct DeviceListing {
    std::vector<SaneDeviceEntry> devices;
    std::set<std::string> failedBackends; // crashed or hung when asked alone
};

// Asks all backends in one process; when that fails, each in its own. Nothing when all of them
// fail. `program` is the worker program.
std::optional<DeviceListing> listDevicesApart(const std::string& program);

// In the listing process: sends every device and then an answer to the worker socket.
int sendDeviceList();

// The backends that SANE's configuration enables.
std::vector<std::string> configuredBackends();
// The names in dll.conf: one a line, '#' starts a comment.
std::vector<std::string> backendLines(std::string_view text);

} // namespace paperline::sources
