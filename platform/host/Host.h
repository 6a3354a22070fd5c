// What the controller asks of the machine it runs on. Slices ask here and hand the answers to
// leaves as arguments; tests replace single members.
#pragma once

#include "platform/host/SystemVersion.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

struct Host {
    std::function<double()> secondsSinceEpoch;     // wall clock, fractions included
    std::function<std::string()> loginName;        // never empty
    std::function<std::string()> homeFolder;       // absolute, without a trailing slash
    std::function<std::string()> localeIdentifier; // "de_DE"; "en_US" for C and POSIX
    std::function<std::vector<std::string>()>
        preferredLanguages;                       // first is preferred: "zh-Hant-TW"
    std::function<SystemVersion()> systemVersion; // from os-release
    std::function<std::optional<uint64_t>()> availableMemoryBytes; // none: cannot be read
    std::function<std::optional<int64_t>(const std::string& path)>
        freeSpaceBytes; // of the path's file system
};

// The process-wide host; starts with the real machine.
Host& host();

// A new host that asks the real machine; tests restore with it.
Host realHost();

} // namespace paperline
