// Clock, user, locale and resources of the machine. Only operations of the controller ask here;
// they pass the values on as arguments. Tests replace members.
#pragma once

#include "platform/host/SystemVersion.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

struct Host {
    std::function<double()> secondsSinceEpoch;     // wall clock, with fractions
    std::function<std::string()> loginName;        // never empty
    std::function<std::string()> homeFolder;       // absolute, without a trailing slash
    std::function<std::string()> localeIdentifier; // "de_DE"; "en_US" for C and POSIX
    std::function<std::vector<std::string>()>
        preferredLanguages;                       // "zh-Hant-TW"; the preferred one first
    std::function<SystemVersion()> systemVersion; // from os-release
    std::function<std::optional<uint64_t>()> availableMemoryBytes; // nothing if unknown
    std::function<std::optional<int64_t>(const std::string& path)>
        freeSpaceBytes; // of the path's file system
};

Host& host();    // the one of this process
Host realHost(); // what host() is at start

} // namespace paperline
