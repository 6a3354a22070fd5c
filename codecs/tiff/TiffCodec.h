// Decodes TIFF files by libtiff.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

// Page `pageIndex`, from 0, with 1, 8 or 24 bits a pixel. Nothing when the file is damaged, has no
// such page, or the page has more than `maximumPixels`, which is checked before memory is allocated
// for them.
[[nodiscard]] std::optional<DecodedImage>
decodeTiffPage(const std::string& path, int pageIndex, uint64_t maximumPixels);
int tiffPageCount(const std::string& path); // 0: not a TIFF file

} // namespace paperline
