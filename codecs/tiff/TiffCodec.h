// Decodes TIFF files by libtiff.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

// Nothing when the file is damaged or the page has more than `maximumPixels`, which is tested
// before memory is taken for them.
[[nodiscard]] std::optional<DecodedImage>
decodeTiffPage(const std::string& path, int pageIndex, uint64_t maximumPixels);
int tiffPageCount(const std::string& path); // 0: no TIFF

} // namespace paperline
