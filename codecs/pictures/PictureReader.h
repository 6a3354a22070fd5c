// Decodes pages of picture files: JPEG, PNG, PNM and TIFF, told apart by content.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace paperline {

// Page `pageIndex` with 1, 8 or 24 bits a pixel: 16-bit samples are reduced, palettes resolved,
// transparent parts white, 0 is black. Only TIFF files have more than page 0. Nothing when the file
// is no such picture, is damaged, or the page has more than `maximumPixels`.
[[nodiscard]] std::optional<DecodedImage>
readPicture(const std::string& path, int pageIndex, uint64_t maximumPixels);

// By the headers alone; 0 for anything else.
[[nodiscard]] int picturePageCount(const std::string& path);

} // namespace paperline
