// A sheet as a scanner would deliver it: soft edges, the grain of photographs, sensor noise.
#pragma once

#include "bench/SheetLayout.h"
#include "codecs/pixels/BitmapImageRep.h"

#include <memory>

namespace paperline::bench {

// 1, 8 (grey) or 24 bits; A4 at `dpi`. Null without memory. `seed` gives the noise.
std::shared_ptr<BitmapImageRep>
scanSheet(const Sheet& sheet, double dpi, int bitsPerPixel, uint64_t seed);

} // namespace paperline::bench
