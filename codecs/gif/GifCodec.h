// Encodes GIF files by giflib.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

// A GIF of one image. 1-bit pages (two colours), grey pages (256) and 24-bit pages of at most 256
// colours are exact; others get a palette of 256 colours with error diffusion. GIF stores no
// resolution. Nothing when the page has another layout, is larger than 65,535 pixels a side, or
// memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeGif(const BitmapImageRep& page);

} // namespace paperline
