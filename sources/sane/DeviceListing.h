// SANE's devices, listed where a broken driver can do no harm: in processes of their own, with a
// time limit.
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
    std::set<std::string> silentBackends; // asked alone, they crashed or hung
};

// Lists with all backends in one process; when that fails, with a process for each. Nothing when no
// backend at all could say what it has. `program` is the worker program.
std::optional<DeviceListing> listDevicesApart(const std::string& program);

// The listing process's half: sends every device and then an answer to its standard worker socket.
int sendDeviceList();

// Names of the backends that SANE's configuration switches on.
std::vector<std::string> configuredBackends();
// The names in a file like dll.conf: one a line, '#' starts a comment.
std::vector<std::string> backendLines(std::string_view text);

} // namespace paperline::sources
