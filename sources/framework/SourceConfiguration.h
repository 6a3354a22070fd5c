// What a bundle says about its data source: Versions/A/Resources/source.conf, one KEY=VALUE a line.
#pragma once

#include <optional>
#include <string>

namespace paperline::sources {

struct SourceConfiguration {
    std::string bundlePath;   // absolute
    std::string library;      // the shared library that the loader stub forwards to
    std::string worker;       // the worker program, absolute
    std::string device;       // the device's name as the worker knows it, may be empty
    std::string product;      // equals ProductName of Info.plist
    std::string manufacturer; // equals Manufacturer of Info.plist
    std::string family;
    std::string helpers; // folder of helper programs, absolute
};

// Nothing when the file is missing or names no product. A relative `library`, `helpers` or `worker`
// path starts at the bundle's folder; a `worker` without a slash lies in `helpers`.
[[nodiscard]] std::optional<SourceConfiguration>
readSourceConfiguration(const std::string& bundlePath);

} // namespace paperline::sources
