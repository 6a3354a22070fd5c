// The entries of a bundle's Info.plist that the manager needs.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace paperline::dsm {

inline constexpr uint64_t largestInfoPlistBytes = 256 * 1024;

struct BundleInfo {
    std::string executable; // CFBundleExecutable: a plain file name
    bool fallback = false;  // PaperlineFallback: listed only when nothing else is there
};

// Nothing when the property list is damaged or has no CFBundleExecutable that is a plain file name.
[[nodiscard]] std::optional<BundleInfo> parseBundleInfo(std::span<const uint8_t> propertyList);

// Nothing, too, when there is no such regular file or it is larger than largestInfoPlistBytes.
[[nodiscard]] std::optional<BundleInfo> readBundleInfo(const std::string& path);

} // namespace paperline::dsm
