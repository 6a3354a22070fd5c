// The format of native and file transfers on Linux: an uncompressed TIFF file of one strip.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline::sources {

// The bytes before the page's pixels, which follow unchanged. Nothing when the format is invalid or
// the file would exceed 4 GiB.
[[nodiscard]] std::optional<std::vector<uint8_t>> tiffHeader(const PageFormat& format);

} // namespace paperline::sources
