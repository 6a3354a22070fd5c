// What every decoder returns.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <memory>

namespace paperline {

struct DecodedImage {
    std::shared_ptr<BitmapImageRep> image; // 1, 8 or 24 bits a pixel
    double horizontalDpi = 0;              // 0: the file does not say
    double verticalDpi = 0;
};

} // namespace paperline
