// GIF files by giflib.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

// A GIF of one picture. 1-bit pages have two colours and 1 bit a pixel, grey ones the 256 greys;
// both are exact. 24-bit pages of at most 256 colours are exact, too, others get the best 256 with
// error diffusion. The format has no place for a resolution. Nothing when the page has another
// layout, is larger than 65,535 pixels a side, or memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>> encodeGif(const BitmapImageRep& page);

} // namespace paperline
