// Reads the few entries of a bundle's Info.plist that the manager needs. The manager is loaded into
// other makers' programs and brings no library along, so this is a small reader of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace paperline::dsm {

inline constexpr uint64_t largestInfoPlistBytes = 256 * 1024;

struct BundleInfo {
    std::string executable; // CFBundleExecutable: a plain file name
    bool fallback = false;  // PaperlineFallback: listed only when nothing else is there
};

// Nothing when the text is damaged, or has no CFBundleExecutable that is a plain file name. Entries
// of other keys may hold any value; only the entries of the outermost dictionary count.
[[nodiscard]] std::optional<BundleInfo> parseBundleInfo(std::string_view xml);

// Nothing, too, when there is no such regular file or it is larger than largestInfoPlistBytes.
[[nodiscard]] std::optional<BundleInfo> readBundleInfo(const std::string& path);

} // namespace paperline::dsm
