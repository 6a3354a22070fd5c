// A bundle's description of its data source: Versions/A/Resources/source.conf, one KEY=VALUE a
// line.
#pragma once

#include <optional>
#include <string>

namespace paperline::sources {

struct SourceConfiguration {
    std::string bundlePath;   // absolute
    std::string worker;       // the worker program, absolute
    std::string device;       // the worker's name of the device, may be empty
    std::string product;      // equals ProductName of Info.plist
    std::string manufacturer; // equals Manufacturer of Info.plist
    std::string family;
};

// Nothing when the file is missing or names no product. Relative paths start at the bundle; a
// `worker` without a slash lies in the folder `helpers`.
[[nodiscard]] std::optional<SourceConfiguration>
readSourceConfiguration(const std::string& bundlePath);

} // namespace paperline::sources
