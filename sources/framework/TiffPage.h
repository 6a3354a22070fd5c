// A page as the standard hands it over on Linux outside buffered transfers: an uncompressed
// one-strip TIFF file.
#pragma once

#include "sources/framework/ScanTypes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline::sources {

// The bytes in front of the page's pixels, which follow as they are (little-endian, one IFD).
// Nothing when the file would pass 4 GiB or the page has no size.
[[nodiscard]] std::optional<std::vector<uint8_t>> tiffHeader(const PageFormat& format);

} // namespace paperline::sources
