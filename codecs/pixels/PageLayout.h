// Which images can be pages.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

namespace paperline {

// One sample of 1 or 8 bits a pixel, or three of 8.
[[nodiscard]] bool hasPageLayout(const BitmapImageRep& image);

} // namespace paperline
