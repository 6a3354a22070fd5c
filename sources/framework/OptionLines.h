// Configuration files of data sources, and options in the environment: one NAME=VALUE a line. Blank
// lines and lines that start with '#' are skipped.
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

// In their order. A line without "=" is a name with an empty value. The name is trimmed, the value
// is not.
std::vector<OptionSetting> parseOptionSettings(std::string_view lines);

// <user data>/Device Options/<product>.conf, each "/" of the product replaced by "_"; empty without
// a product or a home folder.
std::string storedOptionsPath(const std::string& product);

// The settings in that file; empty when it cannot be read.
std::vector<OptionSetting> storedOptions(const std::string& product);

// The options of one scan, from the environment variable PAPERLINE_SOURCE_OPTIONS.
std::vector<OptionSetting> scanOptions();

} // namespace paperline::sources
