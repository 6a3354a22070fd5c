// Configuration files of data sources: one NAME=VALUE a line; blank lines and lines that start with
// '#' are ignored.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace paperline::sources {

inline constexpr uint64_t maximumConfigurationBytes = 1 << 20; // larger files are not read

struct OptionSetting {
    std::string name;
    std::string value;
    bool operator==(const OptionSetting&) const = default;
};

// Settings in their order. A line without "=" is a name with an empty value. Blanks around the name
// are dropped, the value is kept as it is.
std::vector<OptionSetting> parseOptionSettings(std::string_view lines);

// <user data>/Device Options/<product>.conf, "/" in the product standing as "_"; empty without a
// product or a home.
std::string storedOptionsPath(const std::string& product);

// The settings in that file; empty when it cannot be read.
std::vector<OptionSetting> storedOptions(const std::string& product);

// Options of this scan only, from the environment variable PAPERLINE_SOURCE_OPTIONS.
std::vector<OptionSetting> scanOptions();

} // namespace paperline::sources
