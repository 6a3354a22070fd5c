// Decodes PNG files by libpng, those of our own writer by PngStream.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <span>

namespace paperline {

// 1, 8 or 24 bits a pixel. Nothing when the file is damaged or has more than `maximumPixels`, which
// is checked before memory is allocated for them.
[[nodiscard]] std::optional<DecodedImage> decodePng(std::span<const uint8_t> bytes,
                                                    uint64_t maximumPixels);

} // namespace paperline
